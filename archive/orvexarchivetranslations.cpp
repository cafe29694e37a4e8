#include "orvexarchivetranslations.h"

#include <QCoreApplication>
#include <QMetaObject>
#include <QPointer>
#include <QThread>
#include <QTranslator>

static void initArchiveTranslationResources()
{
    Q_INIT_RESOURCE(orvexarchive_translations);
}

bool OrvexArchiveTranslations::install(const QLocale &locale)
{
    QCoreApplication *app = QCoreApplication::instance();
    if (!app)
        return false;
    initArchiveTranslationResources();
    auto *translator = new QTranslator;
    if (!translator->load(locale, QStringLiteral("orvexarchive"), QStringLiteral("_"), QStringLiteral(":/translations"))) {
        delete translator;
        translator = nullptr; // the English texts: the previous catalogue goes
    } else {
        translator->moveToThread(app->thread());
    }
    // Installing sends LanguageChange to the application object: only on its thread.
    QMetaObject::invokeMethod(app, [translator, app] {
        static QPointer<QTranslator> installed;
        if (installed) {
            QCoreApplication::removeTranslator(installed);
            delete installed;
        }
        if (translator) {
            translator->setParent(app);
            QCoreApplication::installTranslator(translator);
        }
        installed = translator;
    }, QThread::currentThread() == app->thread() ? Qt::DirectConnection : Qt::QueuedConnection);
    return translator != nullptr;
}
