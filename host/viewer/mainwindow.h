#pragma once

#include <QMainWindow>

class CameraSelectorDock;
class FeaturesDock;
class LiveView;
class LogDock;
class ViewerHost;

/// The viewer's window: menus by id from the menu service, the camera list,
/// the live view, the features and the log. Its own commands are registered
/// with the menu service like any plug-in's.
class MainWindow : public QMainWindow {
    Q_OBJECT
public:
    explicit MainWindow(ViewerHost& host, QWidget* parent = nullptr);
    ~MainWindow() override;

    CameraSelectorDock* cameraSelector() const { return m_cameras; }
    LiveView* liveView() const { return m_live; }
    FeaturesDock* features() const { return m_features; }
    LogDock* log() const { return m_log; }

    /// Selects and opens the camera of that id; false when it is unknown or cannot be opened.
    bool openCameraById(const QString& deviceId);
    void showAboutPlugins();

private:
    void registerCommand(QAction* action, const char* id, const char* menu, const char* group);
    void addMenu(const QString& title, const char* id);

    ViewerHost& m_host;
    CameraSelectorDock* m_cameras;
    LiveView* m_live;
    FeaturesDock* m_features;
    LogDock* m_log;
};
