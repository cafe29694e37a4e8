#include "orvexhosttranslations.h"

#include "orvextranslations.h"

#include <QCoreApplication>
#include <QLibraryInfo>
#include <QPointer>
#include <QTranslator>

static void initHostTranslationResources()
{
    // The catalogues live in a static library: pull its resources in explicitly.
    Q_INIT_RESOURCE(orvexhost_translations);
}

namespace {
QPointer<QTranslator> &slot(int index)
{
    static QPointer<QTranslator> translators[3];
    return translators[index];
}

bool installInto(QPointer<QTranslator> &slot, const QLocale &locale, const QString &name, const QString &folder)
{
    if (slot) {
        QCoreApplication::removeTranslator(slot);
        delete slot;
    }
    auto *translator = new QTranslator(QCoreApplication::instance());
    if (!translator->load(locale, name, QStringLiteral("_"), folder)) {
        delete translator;
        return false;
    }
    QCoreApplication::installTranslator(translator);
    slot = translator;
    return true;
}
} // namespace

bool OrvexHostTranslations::install(const QLocale &locale)
{
    initHostTranslationResources();
    const QString resources = QStringLiteral(":/translations");
    // The English catalogue only holds the plural forms ("1 document", "2 documents");
    // it stays underneath every other language, which is installed later and wins.
    installInto(slot(0), QLocale(QLocale::English), QStringLiteral("orvexhost"), resources);
    installInto(slot(1), locale, QStringLiteral("qtbase"), QLibraryInfo::location(QLibraryInfo::TranslationsPath));
    const bool found = installInto(slot(2), locale, QStringLiteral("orvexhost"), resources);
    OrvexTranslations::install(locale);
    return found;
}
