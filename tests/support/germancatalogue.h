#pragma once

#include <QCoreApplication>
#include <QTranslator>

// The workbench's German catalogue, installed while this lives (when asked to).
class GermanCatalogue
{
public:
    explicit GermanCatalogue(bool install = true)
    {
        m_loaded = m_translator.load(QStringLiteral(":/translations/orvexworkbench_de.qm"));
        m_installed = install && m_loaded && QCoreApplication::installTranslator(&m_translator);
    }
    ~GermanCatalogue()
    {
        if (m_installed)
            QCoreApplication::removeTranslator(&m_translator);
    }
    GermanCatalogue(const GermanCatalogue &) = delete;
    GermanCatalogue &operator=(const GermanCatalogue &) = delete;

    bool isLoaded() const { return m_loaded; }

private:
    QTranslator m_translator;
    bool m_loaded = false;
    bool m_installed = false;
};
