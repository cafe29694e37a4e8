// The card scripts as exact texts: the page runs them as they are, so a changed
// character is a changed page. Scripts that carry text are also run in a plain
// JavaScript engine against a stand-in for jQuery, which must receive the text
// exactly; the board test runs them in the real page.
#include "hostilenotes.h"
#include "orvexcardscripts.h"

#include <QFile>
#include <QJSEngine>
#include <QtTest>

using S = orvexcardscripts;

namespace {

// Beside the notes a user types, texts only a server could send.
QList<HostileNote> hostileTexts()
{
    return hostileNotes() + QList<HostileNote>{
        {"carriage return", QStringLiteral("a\r\nb\rc")},
        {"control characters", QStringLiteral("nul") + QChar(0) + QStringLiteral("bell") + QChar(7)
                                   + QStringLiteral("del") + QChar(0x7f)},
        {"unpaired surrogates", QStringLiteral("x") + QChar(0xD83D) + QStringLiteral("y") + QChar(0xDE00)},
    };
}

// Runs a script against a stand-in for jQuery that records what each call
// receives ("#id.val", "#id.text", "#overview.append"), and answers it.
QVariantMap recorded(const QString &script)
{
    QJSEngine engine;
    const QJSValue result = engine.evaluate(QStringLiteral(R"(
        var got = {};
        function element(selector) {
            var self = {
                parent: function () { return self; },
                addClass: function () { return self; },
                removeClass: function () { return self; },
                val: function (v) { got[selector + '.val'] = v; return self; },
                text: function (v) { got[selector + '.text'] = v; return self; },
                append: function (v) { got[selector + '.append'] = v; return self; }
            };
            return self;
        }
        var $ = element;
        var document = { getElementById: function (id) {
            return { set innerHTML(v) { got['#' + id + '.innerHTML'] = v; } };
        } };
        function getCardPixmap() {}
        function checkButtons() {}
    )") + script + QStringLiteral("\n;got"));
    if (result.isError())
        qWarning() << "script failed:" << result.toString() << script;
    return result.toVariant().toMap();
}

} // namespace

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
        QTest::newRow("scroll to card") << S::scrollToCard("503")
            << "sortCards(); var container = $('.mdl-layout__content'); var scrollTo = $('#section-503'); "
               "container.animate({scrollTop: scrollTo.offset().top - container.offset().top + "
               "container.scrollTop()});null;";
        QTest::newRow("no card: drop hint") << S::countLine(0, 200)
            << "$('#info').text('0 / 200 (max)');$('#drop_zone').show();null;";
        QTest::newRow("append") << S::appendCard("<section></section>", "100", "500")
            << "$('#overview').append('<section></section>');getCardPixmap('500','100','0','img-500');"
               "checkButtons(500);";
        QTest::newRow("fields read-only, search stays") << S::readOnly("500", false)
            << "$('input[type=\"text\"], textarea').attr('readonly','readonly');$('#searchtext').removeAttr('readonly');"
               "$(\"#removecard-500\").attr('disabled','disabled');$(\"#removebutton-500\").attr('disabled','disabled');";
        QTest::newRow("empty note") << S::note("500", "")
            << "if(document.activeElement!==document.getElementById('textarea-500')){"
               "$('#textarea-500').parent().removeClass('is-dirty');$('#textarea-500').val('');}null;";
        QTest::newRow("note, apostrophe escaped") << S::note("500", "Anna's")
            << "if(document.activeElement!==document.getElementById('textarea-500')){"
               "$('#textarea-500').parent().addClass('is-dirty');$('#textarea-500').val('Anna\\'s');}null;";
        QTest::newRow("label as HTML text") << S::translation("Permissions", "Rechte & <Rollen>")
            << "document.getElementById('trans-Permissions').innerHTML ='Rechte &amp; &lt;Rollen&gt;';";
        QTest::newRow("card data, apostrophe escaped") << S::cardData("500", "Approved", "Invoice", "Anna's")
            << "$('#status-500').text('Approved');$('#doctype-500').text('Invoice');"
               "$('#comment-500').text('Anna\\'s');null;";
        QTest::newRow("search result in card order") << S::showCards({"501", "500", "502"}, {"500", "9"})
            << "$('#section-501').hide();$('#section-500').show();$('#section-502').hide();"
               "componentHandler.upgradeDom();null;";
        QTest::newRow("no cards to show") << S::showCards({}, {}) << "componentHandler.upgradeDom();null;";
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

    void cardHtml_data()
    {
        QTest::addColumn<QString>("note");
        QTest::addColumn<QString>("texts"); // the five labels, joined by "|"
        QTest::addColumn<QString>("html");
        const QString head = "<section id=\"section-500\" data-docsid=\"500\"> <h2>100</h2> <span>%1</span> "
                             "<i>%2|%3|%4</i> <textarea>%6</textarea> <label>%5</label> </section>";
        const auto german = [&head](const char *name, const QString &note, const QString &shown) {
            QTest::newRow(name) << note << "Laden...|Notiz...|Öffnen|Entfernen|Klassifikation"
                                << head.arg("Laden...", "Öffnen", "Entfernen", "Klassifikation", "Notiz...", shown);
        };
        german("plain", "it's mine", "it's mine");
        german("placeholder in the note: the note goes in last", "###card-id###", "###card-id###");
        german("simplified() flattened the note", "a  b\n\tc ", "a  b\n\tc ");
        german("the parser drops a first line break", "\nsecond line", "\n\nsecond line");
        QTest::newRow("markup in the note and labels") << "</textarea><b>&amp;" << "<a>|&|b|c|d"
            << head.arg("&lt;a&gt;", "b", "c", "d", "&amp;", "&lt;/textarea&gt;&lt;b&gt;&amp;amp;");
    }

    void cardHtml()
    {
        QFETCH(QString, note);
        QFETCH(QString, texts);
        QFETCH(QString, html);
        const QString cardTemplate = "<section id=\"section-###card-id###\" data-docsid=\"###card-id###\">\n"
                                     "  <h2>###main-text###</h2>\n"
                                     "  <span>###LOADING###</span> <i>###OPEN###|###REMOVECARD###|###SHOWCLASSIFY###</i>\n"
                                     "  <textarea>###COMMENT###</textarea>\t<label>###NOTICE###</label>\n"
                                     "</section>\n";
        const QStringList t = texts.split('|');
        QCOMPARE(S::cardHtml(cardTemplate, "100", "500", note, {t[0], t[1], t[2], t[3], t[4]}), html);
    }

    // The conversions the scripts are built on, a row each: the text as a
    // script literal and as HTML text, a page count, and whether a text may
    // stand in a script as an id.
    void conversions_data()
    {
        QTest::addColumn<QString>("conversion");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("expected");
        QTest::newRow("jsString: plain text stays") << "jsString" << "Invoice 2021, approved" << "'Invoice 2021, approved'";
        QTest::newRow("jsString: quotes and backslashes") << "jsString" << "Anna's \"C:\\new\"" << "'Anna\\'s \"C:\\\\new\"'";
        QTest::newRow("jsString: line breaks and tabs") << "jsString" << "a\nb\r\tc" << "'a\\nb\\r\\tc'";
        QTest::newRow("jsString: line and paragraph separators")
            << "jsString" << QString("a") + QChar(0x2028) + QChar(0x2029) << "'a\\u2028\\u2029'";
        QTest::newRow("jsString: end of a script element") << "jsString" << "</SCRIPT></b><!--" << "'\\x3C/SCRIPT></b>\\x3C!--'";
        QTest::newRow("jsString: other control characters") << "jsString" << QString("a") + QChar(0) + QChar(0x1b) << "'a\\u0000\\u001b'";
        QTest::newRow("jsString: a pair stays, a lone half is escaped") << "jsString"
            << QString(QChar(0xD83D)) + QChar(0xDE00) + QChar(0xDE00) << QString("'") + QChar(0xD83D) + QChar(0xDE00) + "\\ude00'";
        QTest::newRow("htmlText: plain") << "htmlText" << "Dokument hier ablegen" << "Dokument hier ablegen";
        QTest::newRow("htmlText: markup") << "htmlText" << "<img src=x onerror=alert(1)>" << "&lt;img src=x onerror=alert(1)&gt;";
        QTest::newRow("htmlText: entity") << "htmlText" << "&amp;" << "&amp;amp;";
        QTest::newRow("htmlText: quotes stay for the literal") << "htmlText" << "it's \"so\"" << "it's \"so\"";
        QTest::newRow("pageCount: pages") << "pageCount" << "12" << "12";
        QTest::newRow("pageCount: negative left the card loading") << "pageCount" << "-3" << "1";
        QTest::newRow("pageCount: zero") << "pageCount" << "0" << "1";
        QTest::newRow("pageCount: missing") << "pageCount" << "" << "1";
        QTest::newRow("pageCount: not a number") << "pageCount" << "x2" << "1";
        QTest::newRow("isId: number") << "isId" << "4711" << "accepted";
        QTest::newRow("isId: 18 digits") << "isId" << QString(18, '9') << "accepted";
        QTest::newRow("isId: 19 digits") << "isId" << QString(19, '9') << "refused";
        QTest::newRow("isId: empty") << "isId" << "" << "refused";
        QTest::newRow("isId: decimal") << "isId" << "7.5" << "refused";
        QTest::newRow("isId: negative") << "isId" << "-1" << "refused";
        QTest::newRow("isId: blank around") << "isId" << " 12" << "refused";
        QTest::newRow("isId: script") << "isId" << "1');alert('x" << "refused";
        QTest::newRow("isId: line end") << "isId" << "12\n" << "refused";
    }

    void conversions()
    {
        QFETCH(QString, conversion);
        QFETCH(QString, text);
        QFETCH(QString, expected);
        const QHash<QString, std::function<QString(const QString &)>> convert{
            {"jsString", S::jsString}, {"htmlText", S::htmlText}, {"pageCount", S::pageCount},
            {"isId", [](const QString &id) { return QString(S::isId(id) ? "accepted" : "refused"); }}};
        QVERIFY(convert.contains(conversion));
        QCOMPARE(convert.value(conversion)(text), expected);
    }

    // Every script that carries text hands the page exactly that text.
    void textsArriveExactly_data()
    {
        QTest::addColumn<QString>("text");
        for (const HostileNote &note : hostileTexts())
            QTest::newRow(note.fault) << note.text;
    }

    void textsArriveExactly()
    {
        QFETCH(QString, text);
        QJSEngine engine;
        QCOMPARE(engine.evaluate(S::jsString(text)).toString(), text);

        QCOMPARE(recorded(S::note("500", text)).value("#textarea-500.val").toString(), text);
        const QVariantMap data = recorded(S::cardData("500", text, text + "2", text + "3"));
        QCOMPARE(data.value("#status-500.text").toString(), text);
        QCOMPARE(data.value("#doctype-500.text").toString(), text + "2");
        QCOMPARE(data.value("#comment-500.text").toString(), text + "3");
        QCOMPARE(recorded(S::translation("Permissions", text)).value("#trans-Permissions.innerHTML").toString(),
                 S::htmlText(text));
        const QString html = S::cardHtml("<textarea>###COMMENT###</textarea>", "100", "500", text, {});
        QCOMPARE(recorded(S::appendCard(html, "100", "500")).value("#overview.append").toString(), html);
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
};

QTEST_GUILESS_MAIN(tst_CardScripts)
#include "tst_cardscripts.moc"
