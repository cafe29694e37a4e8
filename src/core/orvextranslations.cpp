#include "orvextranslations.h"

#include <QCoreApplication>
#include <QPointer>
#include <QTranslator>

bool OrvexTranslations::install(const QLocale &locale)
{
    static QPointer<QTranslator> installed;
    if (installed)
        return true;
    auto *translator = new QTranslator(QCoreApplication::instance());
    if (!translator->load(locale, QStringLiteral("orvexworkbench"), QStringLiteral("_"),
                          QStringLiteral(":/translations"))) {
        delete translator;
        return false;
    }
    QCoreApplication::installTranslator(translator);
    installed = translator;
    return true;
}
