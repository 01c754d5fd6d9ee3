#pragma once

#include "core/pluginrecord.h"

#include <QString>
#include <QStringList>

#include <memory>

class MainWindow;
class ViewerHost;

/// The viewer's start-up and shutdown, shared by the program and its tests.
class KaltoViewer {
public:
    struct Options {
        QStringList pluginFolders;  ///< searched in order; missing ones are skipped
        QString language;           ///< "de", "en", "ja", "ko", "zh"; empty: untranslated
        QString cameraId;           ///< selected and opened at start when set
        QString runCommand;         ///< menu command triggered once the window is up
    };

    /// The build's plug-in folder when running from the build tree, and the
    /// installed one beside the program.
    static QStringList defaultPluginFolders();

    explicit KaltoViewer(const Options& options);
    /// Plug-ins go first, while the windows their dialogs may hang on still exist.
    ~KaltoViewer();

    /// Shows the window and schedules the camera and command of the options;
    /// false (with a message on stderr) when the camera is unknown or cannot be opened.
    bool start();
    MainWindow& window();
    ViewerHost& host();
    QList<Core::Plugin::PluginRecord> plugins() const;
    /// Triggers a registered command as a user would; false when it does not
    /// exist or is hidden or disabled now.
    bool runCommand(const QString& id);

private:
    Options m_options;
    std::unique_ptr<ViewerHost> m_host;
    std::unique_ptr<MainWindow> m_window;
};
