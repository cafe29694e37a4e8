#include "orvexcardscripts.h"

#include <QRegularExpression>

bool orvexcardscripts::isId(const QString &text)
{
    // Anchored at the very end: "$" would also let a final line break through.
    static const QRegularExpression number(QRegularExpression::anchoredPattern(QStringLiteral("[0-9]{1,18}")));
    return number.match(text).hasMatch();
}

QString orvexcardscripts::jsString(const QString &text)
{
    QString literal;
    literal.reserve(text.size() + 2);
    literal += QLatin1Char('\'');
    const auto escaped = [&literal](ushort unit) {
        literal += QStringLiteral("\\u%1").arg(unit, 4, 16, QLatin1Char('0'));
    };
    for (int i = 0; i < text.size(); ++i) {
        const QChar c = text.at(i);
        const ushort unit = c.unicode();
        switch (unit) {
        case '\\':
            literal += QLatin1String("\\\\");
            continue;
        case '\'':
            literal += QLatin1String("\\'");
            continue;
        case '\n':
            literal += QLatin1String("\\n");
            continue;
        case '\r':
            literal += QLatin1String("\\r");
            continue;
        case '\t':
            literal += QLatin1String("\\t");
            continue;
        case '<':
            // Harmless to runJavaScript, but the end of a script element should
            // the text ever be written into one.
            if (text.midRef(i, 8).compare(QLatin1String("</script"), Qt::CaseInsensitive) == 0
                || text.midRef(i, 4) == QLatin1String("<!--")) {
                literal += QLatin1String("\\x3C");
                continue;
            }
            break;
        default:
            break;
        }
        if (unit < 0x20 || unit == 0x7f || unit == 0x2028 || unit == 0x2029) {
            escaped(unit); // line terminators end a literal; the others are unreadable
        } else if (c.isHighSurrogate() && i + 1 < text.size() && text.at(i + 1).isLowSurrogate()) {
            literal += c;
            literal += text.at(++i);
        } else if (c.isSurrogate()) {
            escaped(unit); // alone it would not survive the way into the page as UTF-8
        } else {
            literal += c;
        }
    }
    literal += QLatin1Char('\'');
    return literal;
}

QString orvexcardscripts::htmlText(const QString &text)
{
    QString html;
    html.reserve(text.size());
    for (const QChar c : text) {
        if (c == QLatin1Char('&'))
            html += QLatin1String("&amp;");
        else if (c == QLatin1Char('<'))
            html += QLatin1String("&lt;");
        else if (c == QLatin1Char('>'))
            html += QLatin1String("&gt;");
        else
            html += c;
    }
    return html;
}

QString orvexcardscripts::pageCount(const QString &text)
{
    return isId(text) && text.toLongLong() > 0 ? text : QStringLiteral("1");
}

QString orvexcardscripts::translation(const QString &labelKey, const QString &text)
{
    QString labelId = labelKey;
    labelId.remove(QLatin1Char(' ')).remove(QLatin1Char('.'));
    return QStringLiteral("document.getElementById('trans-") + labelId + QStringLiteral("').innerHTML =")
           + jsString(htmlText(text)) + QLatin1Char(';');
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
    // Only the template is put on one line: the texts keep their blanks.
    QString html = cardTemplate.simplified();
    // The parser drops a line break right after <textarea>: a note that starts
    // with one gets a second, which the parser takes instead.
    const bool leadingBreak = note.startsWith(QLatin1Char('\n')) || note.startsWith(QLatin1Char('\r'));
    const QString noteHtml = leadingBreak ? QLatin1Char('\n') + htmlText(note) : htmlText(note);
    html.replace(QLatin1String("###card-id###"), cardId)
        .replace(QLatin1String("###main-text###"), docId)
        .replace(QLatin1String("###LOADING###"), htmlText(texts.loading))
        .replace(QLatin1String("###NOTICE###"), htmlText(texts.notice))
        .replace(QLatin1String("###OPEN###"), htmlText(texts.open))
        .replace(QLatin1String("###REMOVECARD###"), htmlText(texts.removeCard))
        .replace(QLatin1String("###SHOWCLASSIFY###"), htmlText(texts.showClassification))
        .replace(QLatin1String("###COMMENT###"), noteHtml);
    return html;
}

QString orvexcardscripts::appendCard(const QString &cardHtml, const QString &docId, const QString &cardId)
{
    return QStringLiteral("$('#overview').append(") + jsString(cardHtml) + QStringLiteral(");getCardPixmap('") + cardId
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
           + QStringLiteral(";$('#textarea-") + cardId + QStringLiteral("').val(") + jsString(note)
           + QStringLiteral(");}null;");
}

QString orvexcardscripts::cardData(const QString &cardId, const QString &status, const QString &type,
                                   const QString &note)
{
    return QStringLiteral("$('#status-") + cardId + QStringLiteral("').text(") + jsString(status)
           + QStringLiteral(");$('#doctype-") + cardId + QStringLiteral("').text(") + jsString(type)
           + QStringLiteral(");$('#comment-") + cardId + QStringLiteral("').text(") + jsString(note)
           + QStringLiteral(");null;");
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
