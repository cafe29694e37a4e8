#include "orvextranslations.h"

#include <QCoreApplication>
#include <QPointer>
#include <QTranslator>

namespace {
QTranslator *installed(const QLocale &locale)
{
    auto *translator = new QTranslator(QCoreApplication::instance());
    if (!translator->load(locale, QStringLiteral("orvexworkbench"), QStringLiteral("_"),
                          QStringLiteral(":/translations"))) {
        delete translator;
        return nullptr;
    }
    QCoreApplication::installTranslator(translator);
    return translator;
}
} // namespace

bool OrvexTranslations::install(const QLocale &locale)
{
    static QPointer<QTranslator> plurals;
    static QPointer<QTranslator> language;
    // The English catalogue only holds the plural forms ("1 file", "2 files");
    // it goes in first, so that the language's catalogue is asked before it.
    if (!plurals)
        plurals = installed(QLocale(QLocale::English));
    if (locale.language() == QLocale::English || locale.language() == QLocale::C)
        return plurals;
    if (!language)
        language = installed(locale);
    return language;
}
