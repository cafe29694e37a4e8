#pragma once

#include "orvexworkbenchglobal.h"

#include <QByteArray>
#include <QSet>
#include <QString>
#include <QStringList>

// Every script the board runs in the card page, built from values: the same
// values always give the same text. Each value is put into its script here and
// nowhere else. Card and document ids are written unquoted into page handlers
// (removeCard(123)), so callers pass only ids that isId() accepts. Every text
// (notes, field values, names, translated labels) goes in as a complete string
// literal made by jsString(), and where the page parses it as HTML it is first
// made HTML text by htmlText(): whatever it holds, the page shows exactly those
// characters and runs nothing. Plain text comes out as it went in, so a script
// without special characters reads the same as it always has.
class ORVEXWORKBENCH_EXPORT orvexcardscripts
{
public:
    // The translated texts of a card, put into the card template.
    struct CardTexts
    {
        QString loading;
        QString notice;
        QString open;
        QString removeCard;
        QString showClassification;
    };

    orvexcardscripts() = delete;

    // Whether text may stand as a card or document id in a script: a plain
    // number. Anything else is refused before a script is built from it.
    static bool isId(const QString &text);

    // text as a complete single-quoted JavaScript string literal that the page
    // reads back as exactly text: quotes, backslashes, line breaks, other
    // control characters, U+2028, U+2029, unpaired surrogates, "</script" and
    // "<!--" are escaped; everything else, emoji included, stays as it is.
    static QString jsString(const QString &text);
    // text as HTML that shows exactly text: "&", "<" and ">" as entities.
    static QString htmlText(const QString &text);
    // A page count from the archive as the page takes it: a positive number;
    // anything missing, negative or not a number counts as one page.
    static QString pageCount(const QString &text);

    // The element id of a page label: "trans-" and the key without blanks and
    // dots, so "Drop Document here" addresses trans-DropDocumenthere.
    static QString translation(const QString &labelKey, const QString &text);
    static QString writeable(bool writeable);
    static QString sortCards();
    // A card drag has ended: the page closes the enlarged preview.
    static QString dragFinished();
    // Sorts, then scrolls the page to the card.
    static QString scrollToCard(const QString &cardId);
    // The card count in the header, and the drop hint while there is no card.
    static QString countLine(int count, int limit);

    // The card template on one line with its placeholders filled: the ids as
    // they are, the texts as HTML text. The note is put in last, so that it
    // cannot bring a placeholder of its own, and it keeps its line breaks,
    // tabs and blanks.
    static QString cardHtml(const QString &cardTemplate, const QString &docId, const QString &cardId,
                            const QString &note, const CardTexts &texts);
    // Appends a filled card (given as HTML) and asks for its first page.
    static QString appendCard(const QString &cardHtml, const QString &docId, const QString &cardId);
    // Asks the card's image for its page count; the board ignores the answer.
    static QString maxPageQuery(const QString &cardId);
    static QString removeCard(const QString &cardId);
    // The read-only switch of the page's text fields and of one card's remove controls.
    static QString readOnly(const QString &cardId, bool writeable);
    // Puts the note into the card's note field as it is given, unless the
    // user is writing in that field: a note being edited is not overwritten
    // (leaving the field saves it, and the next update brings it back).
    static QString note(const QString &cardId, const QString &note);
    // The card's info lines, each set as text.
    static QString cardData(const QString &cardId, const QString &status, const QString &type,
                            const QString &note);
    // Shows the cards in visible and hides the others, in the order of cardIds.
    static QString showCards(const QStringList &cardIds, const QSet<QString> &visible);

    // The card's image gives way to the loading text while its page is fetched.
    static QString thumbnailLoading(const QString &cardId);
    // The page count is known: page buttons updated, image shown, loading text hidden.
    static QString thumbnailPages(const QString &cardId, const QString &pageCount);
    // Puts a PNG into the card's image as a data URL.
    static QString thumbnailImage(const QString &cardId, const QByteArray &png);
    // Asks the page to fetch a page of the card again.
    static QString reloadThumbnail(const QString &cardId, const QString &docId, const QString &page,
                                   const QString &pageCount);
};
