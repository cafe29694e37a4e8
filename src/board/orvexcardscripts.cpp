#include "orvexcardscripts.h"

#include <QRegularExpression>

bool orvexcardscripts::isId(const QString &text)
{
    // Anchored at the very end: "$" would also let a final line break through.
    static const QRegularExpression number(QRegularExpression::anchoredPattern(QStringLiteral("[0-9]{1,18}")));
    return number.match(text).hasMatch();
}

QString orvexcardscripts::escapedNote(const QString &note)
{
    return QString(note).replace(QLatin1String("'"), QLatin1String("\\'"));
}

QString orvexcardscripts::translation(const QString &labelKey, const QString &text)
{
    QString labelId = labelKey;
    labelId.remove(QLatin1Char(' ')).remove(QLatin1Char('.'));
    return QStringLiteral("document.getElementById('trans-") + labelId + QStringLiteral("').innerHTML ='")
           + text + QStringLiteral("';");
}

QString orvexcardscripts::writeable(bool writeable)
{
    return writeable ? QStringLiteral("setWriteable(true);null;") : QStringLiteral("setWriteable(false);null;");
}

QString orvexcardscripts::sortCards()
{
    return QStringLiteral("sortCards();null;");
}

QString orvexcardscripts::dragFinished()
{
    return QStringLiteral("dragFinished();null;");
}

QString orvexcardscripts::scrollToCard(const QString &cardId)
{
    return QStringLiteral("sortCards(); var container = $('.mdl-layout__content'); var scrollTo = $('#section-")
           + cardId
           + QStringLiteral("'); container.animate({scrollTop: scrollTo.offset().top - "
                            "container.offset().top + container.scrollTop()});null;");
}

QString orvexcardscripts::countLine(int count, int limit)
{
    return QStringLiteral("$('#info').text('") + QString::number(count) + QStringLiteral(" / ")
           + QString::number(limit) + QStringLiteral(" (max)');$('#drop_zone').")
           + (count >= 1 ? QStringLiteral("hide") : QStringLiteral("show")) + QStringLiteral("();null;");
}

QString orvexcardscripts::cardHtml(const QString &cardTemplate, const QString &docId, const QString &cardId,
                                   const QString &note, const CardTexts &texts)
{
    QString html = cardTemplate;
    html.replace(QLatin1String("###card-id###"), cardId)
        .replace(QLatin1String("###main-text###"), docId)
        .replace(QLatin1String("###LOADING###"), texts.loading)
        .replace(QLatin1String("###NOTICE###"), texts.notice)
        .replace(QLatin1String("###OPEN###"), texts.open)
        .replace(QLatin1String("###REMOVECARD###"), texts.removeCard)
        .replace(QLatin1String("###SHOWCLASSIFY###"), texts.showClassification)
        .replace(QLatin1String("###COMMENT###"), escapedNote(note));
    return html.simplified();
}

QString orvexcardscripts::appendCard(const QString &cardHtml, const QString &docId, const QString &cardId)
{
    return QStringLiteral("$('#overview').append('") + cardHtml + QStringLiteral("');getCardPixmap('") + cardId
           + QStringLiteral("','") + docId + QStringLiteral("','0','img-") + cardId
           + QStringLiteral("');checkButtons(") + cardId + QStringLiteral(");");
}

QString orvexcardscripts::maxPageQuery(const QString &cardId)
{
    return QStringLiteral("$('#img-") + cardId + QStringLiteral("').data('maxpage');");
}

QString orvexcardscripts::removeCard(const QString &cardId)
{
    return QStringLiteral("$('#section-") + cardId + QStringLiteral("').remove();null;");
}

QString orvexcardscripts::readOnly(const QString &cardId, bool writeable)
{
    if (writeable)
        return QStringLiteral("$('input[type=\"text\"], textarea').removeAttr('readonly');"
                              "$('#searchtext').removeAttr('readonly');")
               + QStringLiteral("$(\"#removecard-") + cardId + QStringLiteral("\").removeAttr('disabled');")
               + QStringLiteral("$(\"#removebutton-") + cardId + QStringLiteral("\").removeAttr('disabled');");
    return QStringLiteral("$('input[type=\"text\"], textarea').attr('readonly','readonly');"
                          "$('#searchtext').removeAttr('readonly');")
           + QStringLiteral("$(\"#removecard-") + cardId + QStringLiteral("\").attr('disabled','disabled');")
           + QStringLiteral("$(\"#removebutton-") + cardId + QStringLiteral("\").attr('disabled','disabled');");
}

QString orvexcardscripts::note(const QString &cardId, const QString &note)
{
    const QString dirty = note.isEmpty() ? QStringLiteral("removeClass('is-dirty')")
                                         : QStringLiteral("addClass('is-dirty')");
    return QStringLiteral("if(document.activeElement!==document.getElementById('textarea-") + cardId
           + QStringLiteral("')){$('#textarea-") + cardId + QStringLiteral("').parent().") + dirty
           + QStringLiteral(";$('#textarea-") + cardId + QStringLiteral("').val('") + note
           + QStringLiteral("');}null;");
}

QString orvexcardscripts::cardData(const QString &cardId, const QString &status, const QString &type,
                                   const QString &note)
{
    return QStringLiteral("$('#status-") + cardId + QStringLiteral("').text('") + status
           + QStringLiteral("');$('#doctype-") + cardId + QStringLiteral("').text('") + type
           + QStringLiteral("');$('#comment-") + cardId + QStringLiteral("').text('") + escapedNote(note)
           + QStringLiteral("');null;");
}

QString orvexcardscripts::showCards(const QStringList &cardIds, const QSet<QString> &visible)
{
    QString script;
    for (const QString &id : cardIds)
        script += QStringLiteral("$('#section-") + id
                  + (visible.contains(id) ? QStringLiteral("').show();") : QStringLiteral("').hide();"));
    return script + QLatin1String("componentHandler.upgradeDom();null;");
}

QString orvexcardscripts::thumbnailLoading(const QString &cardId)
{
    return QStringLiteral("$('#img-") + cardId + QStringLiteral("').hide();$('#spinner-") + cardId
           + QStringLiteral("').show();");
}

QString orvexcardscripts::thumbnailPages(const QString &cardId, const QString &pageCount)
{
    return QStringLiteral("$('#img-") + cardId + QStringLiteral("').data('maxpage','") + pageCount
           + QStringLiteral("');checkButtons(") + cardId + QStringLiteral(");$('#img-") + cardId
           + QStringLiteral("').show();$('#spinner-") + cardId + QStringLiteral("').hide();");
}

QString orvexcardscripts::thumbnailImage(const QString &cardId, const QByteArray &png)
{
    return QStringLiteral("setCardPixmap('img-") + cardId + QStringLiteral("','data:image/png;base64,")
           + QString::fromLatin1(png.toBase64()) + QStringLiteral("');");
}

QString orvexcardscripts::reloadThumbnail(const QString &cardId, const QString &docId, const QString &page,
                                          const QString &pageCount)
{
    return QStringLiteral("getCardPixmap('") + cardId + QStringLiteral("','") + docId + QStringLiteral("','")
           + page + QStringLiteral("','img-") + cardId + QStringLiteral("');$('#img-") + cardId
           + QStringLiteral("').data('maxpage','") + pageCount + QStringLiteral("');checkButtons(") + cardId
           + QStringLiteral(");");
}
