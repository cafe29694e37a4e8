// The card scripts as exact texts: the page runs them as they are, so a changed
// character is a changed page. No web engine here; the board test runs them.
#include "orvexcardscripts.h"

#include <QFile>
#include <QtTest>

using S = orvexcardscripts;

class tst_CardScripts : public QObject
{
    Q_OBJECT

private slots:
    void scripts_data()
    {
        QTest::addColumn<QString>("script");
        QTest::addColumn<QString>("expected");
        QTest::newRow("label id without blanks") << S::translation("Drop Document here", "Dokument hier ablegen")
            << "document.getElementById('trans-DropDocumenthere').innerHTML ='Dokument hier ablegen';";
        QTest::newRow("label id without dots") << S::translation("Search...", "Suche...")
            << "document.getElementById('trans-Search').innerHTML ='Suche...';";
        QTest::newRow("writeable") << S::writeable(true) << "setWriteable(true);null;";
        QTest::newRow("read-only") << S::writeable(false) << "setWriteable(false);null;";
        QTest::newRow("sort") << S::sortCards() << "sortCards();null;";
        QTest::newRow("scroll to card") << S::scrollToCard("503")
            << "sortCards(); var container = $('.mdl-layout__content'); var scrollTo = $('#section-503'); "
               "container.animate({scrollTop: scrollTo.offset().top - container.offset().top + "
               "container.scrollTop()});null;";
        QTest::newRow("no card: drop hint") << S::countLine(0, 200)
            << "$('#info').text('0 / 200 (max)');$('#drop_zone').show();null;";
        QTest::newRow("one card: no drop hint") << S::countLine(1, 200)
            << "$('#info').text('1 / 200 (max)');$('#drop_zone').hide();null;";
        QTest::newRow("append") << S::appendCard("<section></section>", "100", "500")
            << "$('#overview').append('<section></section>');getCardPixmap('500','100','0','img-500');"
               "checkButtons(500);";
        QTest::newRow("page count query") << S::maxPageQuery("500") << "$('#img-500').data('maxpage');";
        QTest::newRow("remove") << S::removeCard("500") << "$('#section-500').remove();null;";
        QTest::newRow("fields editable") << S::readOnly("500", true)
            << "$('input[type=\"text\"], textarea').removeAttr('readonly');$('#searchtext').removeAttr('readonly');"
               "$(\"#removecard-500\").removeAttr('disabled');$(\"#removebutton-500\").removeAttr('disabled');";
        QTest::newRow("fields read-only, search stays") << S::readOnly("500", false)
            << "$('input[type=\"text\"], textarea').attr('readonly','readonly');$('#searchtext').removeAttr('readonly');"
               "$(\"#removecard-500\").attr('disabled','disabled');$(\"#removebutton-500\").attr('disabled','disabled');";
        QTest::newRow("empty note") << S::note("500", "")
            << "if(document.activeElement!==document.getElementById('textarea-500')){"
               "$('#textarea-500').parent().removeClass('is-dirty');$('#textarea-500').val('');}null;";
        QTest::newRow("note as given") << S::note("500", "Anna\\'s")
            << "if(document.activeElement!==document.getElementById('textarea-500')){"
               "$('#textarea-500').parent().addClass('is-dirty');$('#textarea-500').val('Anna\\'s');}null;";
        QTest::newRow("card data, note escaped") << S::cardData("500", "Approved", "Invoice", "Anna's")
            << "$('#status-500').text('Approved');$('#doctype-500').text('Invoice');"
               "$('#comment-500').text('Anna\\'s');null;";
        QTest::newRow("search result in card order") << S::showCards({"501", "500", "502"}, {"500", "9"})
            << "$('#section-501').hide();$('#section-500').show();$('#section-502').hide();"
               "componentHandler.upgradeDom();null;";
        QTest::newRow("no cards to show") << S::showCards({}, {}) << "componentHandler.upgradeDom();null;";
        QTest::newRow("thumbnail loading") << S::thumbnailLoading("500")
            << "$('#img-500').hide();$('#spinner-500').show();";
        QTest::newRow("thumbnail pages") << S::thumbnailPages("500", "3")
            << "$('#img-500').data('maxpage','3');checkButtons(500);$('#img-500').show();$('#spinner-500').hide();";
        QTest::newRow("thumbnail image") << S::thumbnailImage("500", QByteArray("\x89PNG", 4))
            << "setCardPixmap('img-500','data:image/png;base64,iVBORw==');";
        QTest::newRow("thumbnail reload") << S::reloadThumbnail("500", "100", "2", "3")
            << "getCardPixmap('500','100','2','img-500');$('#img-500').data('maxpage','3');checkButtons(500);";
    }

    void scripts()
    {
        QFETCH(QString, script);
        QFETCH(QString, expected);
        QCOMPARE(script, expected);
    }

    void cardHtmlFillsEveryPlaceholderOnOneLine()
    {
        const QString cardTemplate = "<section id=\"section-###card-id###\" data-docsid=\"###card-id###\">\n"
                                     "  <h2>###main-text###</h2>\n"
                                     "  <span>###LOADING###</span> <i>###OPEN###|###REMOVECARD###|###SHOWCLASSIFY###</i>\n"
                                     "  <textarea>###COMMENT###</textarea>\t<label>###NOTICE###</label>\n"
                                     "</section>\n";
        const S::CardTexts texts{"Laden...", "Notiz...", "Öffnen", "Entfernen", "Klassifikation"};
        // The note is escaped and goes in last: a placeholder in it stays text.
        QCOMPARE(S::cardHtml(cardTemplate, "100", "500", "it's ###card-id###", texts),
                 QString("<section id=\"section-500\" data-docsid=\"500\"> <h2>100</h2> <span>Laden...</span> "
                         "<i>Öffnen|Entfernen|Klassifikation</i> <textarea>it\\'s ###card-id###</textarea> "
                         "<label>Notiz...</label> </section>"));
    }

    void realCardTemplateLeavesNoPlaceholder()
    {
        QFile file(":/material/card-module.html");
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QString html = S::cardHtml(QString::fromUtf8(file.readAll()), "100", "500", "", {"a", "b", "c", "d", "e"});
        QVERIFY2(!html.contains("###"), qPrintable(html));
        QVERIFY(!html.contains('\n'));
        QVERIFY(html.contains("onclick=\"openDocument(500,100)\""));
        QVERIFY(html.contains("onclick=\"removeCard(500)\""));
    }

    void ids_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("accepted");
        QTest::newRow("number") << "4711" << true;
        QTest::newRow("18 digits") << QString(18, '9') << true;
        QTest::newRow("19 digits") << QString(19, '9') << false;
        QTest::newRow("empty") << "" << false;
        QTest::newRow("decimal") << "7.5" << false;
        QTest::newRow("negative") << "-1" << false;
        QTest::newRow("blank around") << " 12" << false;
        QTest::newRow("script") << "1');alert('x" << false;
        QTest::newRow("line end") << "12\n" << false;
    }

    void ids()
    {
        QFETCH(QString, text);
        QFETCH(bool, accepted);
        QCOMPARE(S::isId(text), accepted);
    }
};

QTEST_GUILESS_MAIN(tst_CardScripts)
#include "tst_cardscripts.moc"
