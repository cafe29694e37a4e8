#pragma once

#include "orvexworkbenchglobal.h"
#include "thumbdata.h"

#include <QByteArray>
#include <QDialog>
#include <QImage>
#include <QList>
#include <QMap>
#include <QPixmap>
#include <QString>

class QLabel;
class QTimer;
namespace Ui {
class OrvexDuplicatesDlg;
}

// The modal "Duplicate Detected" dialog of an upload: one duplicate at a time,
// the uploaded file's page image ("Original") beside the duplicate's page image,
// paging with Previous/Next, and an optional blink that alternates the two
// images in the duplicate's place so that any difference flickers.
//
// OK and Cancel (renamed with setButtonNames) end the dialog for this file;
// "Cancel All" emits cancelAll() and rejects, for a caller that uploads a batch.
//
// The window geometry and the "Show Difference" choice are kept in QSettings
// (organisation "Vantrel GmbH", the application's name).
class ORVEXWORKBENCH_EXPORT OrvexDuplicatesDlg : public QDialog
{
    Q_OBJECT

public:
    static const char *const SettingsOrganisation;   // "Vantrel GmbH"
    static const char *const GeometryKey;            // "dupDialogGeometry"
    static const char *const ShowDifferencesKey;     // "showDupDifferences"
    static constexpr int BlinkInterval = 800;        // ms between two blink phases
    static constexpr int LayoutDelay = 100;          // ms to wait for the labels' final size

    explicit OrvexDuplicatesDlg(QWidget *parent = nullptr);
    ~OrvexDuplicatesDlg() override;

    // Shows the first duplicate of the list (once the dialog is shown).
    void setDuplicates(const QList<thumbData> &duplicates);
    // The uploaded file's page images, by the keys the duplicates refer to.
    void setOriginals(const QMap<QString, QByteArray> &originals);
    // Texts of the OK and Cancel buttons.
    void setButtonNames(const QString &acceptText, const QString &rejectText);

    int currentIndex() const { return m_current; }
    int duplicateCount() const { return m_duplicates.size(); }
    // True while the current duplicate is the archive's not-authorised placeholder.
    bool isNotAuthorized() const { return m_notAuthorized; }

    // Registers the placeholder of another archive (MD5 of its image bytes in
    // hexadecimal), next to the archive server's, which is always known.
    static bool addPlaceholderFingerprint(const QByteArray &md5Hex);
    // True when the image bytes are a known not-authorised placeholder.
    static bool isPlaceholderImage(const QByteArray &imageBytes);

signals:
    void cancelAll();

public slots:
    void showDiffs();
    void saveDiffSetting();
    void setCancelAllVisible(bool visible);
    void goNext();
    void goPrev();
    void doCancelAll();
    // Shows the current duplicate and its original once the labels have
    // settled (after LayoutDelay); repeated calls meanwhile are merged.
    void showCurrent();

protected:
    void resizeEvent(QResizeEvent *event) override;
    // The first show, by exec() or show(), starts the images and the blink.
    void showEvent(QShowEvent *event) override;
    void hideEvent(QHideEvent *event) override;

private:
    void start();
    void updateCurrent();
    void updateNavigation();
    QString currentCaption() const;
    QPixmap scaledFor(const QImage &image, const QLabel *label) const;
    static bool holdsImage(const QLabel *label);

    QList<thumbData> m_duplicates;
    QMap<QString, QByteArray> m_originals;
    int m_current = 0;
    QTimer *m_blinkTimer;
    bool m_blinkPhase = false;      // true while the original stands in the duplicate's place
    bool m_notAuthorized = false;
    Ui::OrvexDuplicatesDlg *m_ui;

    QTimer *m_showTimer;            // single shot: deferred showCurrent()
    bool m_started = false;
    QPixmap m_dupPixmap;            // current images, scaled to the labels
    QPixmap m_origPixmap;
    QPixmap m_origBlinkPixmap;      // the original at the duplicate label's scale
};
