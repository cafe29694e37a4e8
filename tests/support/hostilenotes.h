#pragma once

#include <QList>
#include <QString>

// Notes a user may type that once broke a card or came back changed, each with
// the fault it guards. Every one must come back exactly as typed.
struct HostileNote
{
    const char *fault;
    QString text;
};

inline QList<HostileNote> hostileNotes()
{
    return {
        {"an apostrophe ended the script string", QStringLiteral("Anna's copy")},
        {"a backslash broke the reload script", QStringLiteral("C:\\users\\anna")},
        {"\\t and \\n came back as tab and line feed", QStringLiteral("C:\\temp\\new")},
        {"simplified() flattened line breaks", QStringLiteral("first line\nsecond line\n\nfourth line\n")},
        {"the HTML parser dropped a first line break", QStringLiteral("\nstarts on line two")},
        {"simplified() collapsed blanks", QStringLiteral("  two  blanks and a trailing one ")},
        {"tab", QStringLiteral("col 1\tcol 2")},
        {"double quotes", QStringLiteral("say \"hi\"")},
        {"markup was inserted as HTML", QStringLiteral("<b>bold</b> & <i>it</i>")},
        {"&amp; became &", QStringLiteral("&amp; &lt; &#39;")},
        {"</textarea> broke the card and let markup run",
         QStringLiteral("</textarea><img src=x onerror=\"window.hacked=1\">")},
        {"end of a script element", QStringLiteral("</script><!--")},
        {"markup that runs script", QStringLiteral("<img src=x onerror=\"window.hacked=1\">")},
        {"a quote that leaves the string", QStringLiteral("');window.hacked=1;('")},
        {"U+2028 and U+2029 end a script string",
         QStringLiteral("a") + QChar(0x2028) + QStringLiteral("b") + QChar(0x2029) + QStringLiteral("c")},
        {"emoji", QString::fromUtf8("\xF0\x9F\x98\x80 \xF0\x9F\x91\x8D\xF0\x9F\x8F\xBD, a family "
                                    "\xF0\x9F\x91\xA8\xE2\x80\x8D\xF0\x9F\x91\xA9\xE2\x80\x8D\xF0\x9F\x91\xA7 "
                                    "and a flag \xF0\x9F\x87\xA9\xF0\x9F\x87\xAA")},
        {"right-to-left text", QString::fromUtf8("\xD7\xA9\xD7\x9C\xD7\x95\xD7\x9D \xD9\x85\xD8\xB1\xD8\xAD"
                                                 "\xD8\xA8\xD8\xA7 12")},
        {"a placeholder of the card template", QStringLiteral("###card-id### ###COMMENT###")},
        // Two UTF-16 units each: the limit counts characters, not units.
        {"1024 characters of emoji", QString::fromUtf8("\xF0\x9F\x98\x80").repeated(1024)},
    };
}
