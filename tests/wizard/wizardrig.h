#pragma once

#include <QDialog>
#include <QJsonObject>
#include <QPointer>
#include <QString>
#include <QStringList>

#include <functional>
#include <memory>

class ColorCorrectionModel;
class ColorCorrectionToolDlg;
class QPluginLoader;
class EmulatedPool;
class QmlDataModelInterface;
class QObject;
class QQuickItem;
class QQuickView;
class QSignalSpy;

/// The colour settings of a feature-persistence text, as the results screen lists them.
QJsonObject colourSettings(QString settingsText);

/// One camera's calibrator window as a person sees it: the tool dialog with
/// the wizard, over an opened session on an emulated camera, in the language
/// the plug-in was set to. The rig only looks at the screen and presses keys
/// and buttons; opening the camera, the host's part, it does itself.
class WizardRig {
public:
    /// Frames small enough for sanitizer builds, large enough for the chart finder.
    static constexpr int kFrameWidth = 480;
    static constexpr int kFrameHeight = 360;

    /// `language` "en", "de", "ja", ...: set through the plug-in before the wizard loads.
    explicit WizardRig(const QString& cameraId, const QString& language = "en");
    /// The calibrator window a host opened (the viewer's Tools menu), driven
    /// the same way; the host keeps owning it and its camera. Its objects are
    /// the loaded plug-in's, so the rig sees them through Qt's meta-objects
    /// only: pool(), facade(), settingsText(), hoverPatch() and logLines() are
    /// for the rig's own window.
    WizardRig(QQuickView& view, QDialog& window);
    ~WizardRig();

    EmulatedPool& pool() { return *m_pool; }
    QmlDataModelInterface& facade() { return *m_facade; }
    QQuickView& view() { return *m_view; }
    QDialog& dialog() { return *m_dialog; }
    /// The camera's feature-persistence text, read past the session.
    QString settingsText();

    /// The wizard's item (or popup) of that objectName, visible or not; null if there is none.
    QObject* find(const QString& objectName) const;
    QQuickItem* item(const QString& objectName) const;
    /// A visible item whose `text` property is `text`, e.g. a combo box entry.
    QQuickItem* itemWithText(const QString& text) const;
    QVariant property(const QString& objectName, const char* name) const;

    void click(QQuickItem* item);
    void click(const QString& objectName);
    void key(int key, int modifiers = 0);
    void type(const QString& text);
    /// Spins the event loop until `done` holds, for at most `timeoutMs`.
    bool waitFor(const std::function<bool()>& done, int timeoutMs = 60000);

    int activeStep() const;
    bool controlsEnabled() const;
    /// The text of the open message box, "" when none is open.
    QString messageText() const;
    QString messageTitle() const;
    bool waitForMessage(int timeoutMs = 60000);
    /// Presses the box's button ("messageBoxOk", "messageBoxYes", "messageBoxNo") and waits for it to close.
    void answerMessage(const QString& button = "messageBoxOk");
    /// Waits until the wizard shows `step` with its controls enabled and no box open.
    bool waitForStep(int step, int timeoutMs = 120000);

    /// Step 1: automatic grid position; then Next. Steps 2 to 3: Next.
    bool positionGridAutomatically();
    bool next();
    /// Step 2: Auto, until the brightness loop has ended; false when it never starts or ends.
    bool autoBrightness();
    /// Step 4: ticks the option ("saveSettings", "saveSummary") and types the folder beside it.
    void chooseFolder(const QString& option, const QString& folder);
    /// Step 4: settings and summary into folders below `root`, the first user set chosen by
    /// keyboard, then Save; true once the save status shows.
    bool saveToFoldersAndFirstUserSet(const QString& root);

    /// Rests the mouse pointer on a patch of the chart grid (0 to 23), a little below its centre.
    void hoverPatch(int index);
    /// What the tool wrote to the host's log window so far.
    const QStringList& logLines() const { return m_log; }

    /// Waits for the live image's next frame, as a person waits to see the picture.
    bool waitForLiveImage(int timeoutMs = 30000);
    /// Writes the window to out/screenshots/<name>.png.
    void screenshot(const QString& name);

    /// How the wizard ended: "cancel", "finish" or "" while it runs.
    QString ended() const;
    /// Whether the dialog has finished (and so released the camera).
    bool windowClosed() const { return m_closed; }
    bool waitForWindowClosed(int timeoutMs = 10000);
    /// Closes the window by its frame, as the window system does.
    void closeByFrame();

private:
    /// Watches the wizard's end and waits for its step 1.
    void watch();

    std::unique_ptr<EmulatedPool> m_pool;
    std::unique_ptr<ColorCorrectionModel> m_model;
    std::unique_ptr<QmlDataModelInterface> m_facade;
    std::unique_ptr<ColorCorrectionToolDlg> m_ownDialog;
    std::unique_ptr<QPluginLoader> m_plugin;
    QQuickView* m_view = nullptr;
    QPointer<QDialog> m_dialog;  ///< a host may delete its window once it is closed
    std::unique_ptr<QSignalSpy> m_finished, m_cancelled;
    QString m_cameraId;
    bool m_closed = false;
    QStringList m_log;
};
