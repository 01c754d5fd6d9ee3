#include "kaltoviewer.h"

#include "cameraselectordock.h"
#include "mainwindow.h"
#include "viewerhost.h"

#include "appcore/icommand.h"
#include "appcore/imenuservice.h"

#include <QAction>
#include <QCoreApplication>
#include <QDir>
#include <QTimer>

#include <cstdio>

QStringList KaltoViewer::defaultPluginFolders()
{
    const QDir app(QCoreApplication::applicationDirPath());
    QStringList folders;
#ifdef KALTOVIEWER_BUILD_DIR
    // Only a program inside the build tree takes the build's plug-ins.
    if (app.absolutePath().startsWith(QDir(QStringLiteral(KALTOVIEWER_BUILD_DIR)).absolutePath()))
        folders << QStringLiteral(KALTOVIEWER_BUILD_DIR "/plugins");
#endif
    folders << app.absoluteFilePath(QStringLiteral("../" KALTOVIEWER_INSTALL_PLUGIN_DIR));
    return folders;
}

KaltoViewer::KaltoViewer(const Options& options) : m_options(options), m_host(new ViewerHost)
{
    m_host->loadPlugins(options.pluginFolders);
    if (!options.language.isEmpty())
        m_host->setLanguage(options.language);
    m_window = std::make_unique<MainWindow>(*m_host);
}

KaltoViewer::~KaltoViewer()
{
    m_host->unloadPlugins();
    m_window.reset();
    m_host.reset();
}

bool KaltoViewer::start()
{
    m_window->show();
    if (!m_options.cameraId.isEmpty() && !m_window->openCameraById(m_options.cameraId)) {
        std::fprintf(stderr, "kaltoviewer: camera \"%s\" is unknown or cannot be opened\n",
                     qPrintable(m_options.cameraId));
        return false;
    }
    if (!m_options.runCommand.isEmpty()) {
        const QString id = m_options.runCommand;
        QTimer::singleShot(0, m_window.get(), [this, id] {
            if (!runCommand(id))
                std::fprintf(stderr, "kaltoviewer: command \"%s\" is not available here\n", qPrintable(id));
        });
    }
    return true;
}

MainWindow& KaltoViewer::window() { return *m_window; }
ViewerHost& KaltoViewer::host() { return *m_host; }
QList<Core::Plugin::PluginRecord> KaltoViewer::plugins() const { return m_host->plugins(); }

bool KaltoViewer::runCommand(const QString& id)
{
    Plugin::AppCore::ICommand* command = m_host->menus().command(Core::CId(id));
    auto* action = command ? qobject_cast<QAction*>(command->action()) : nullptr;
    if (!action || !action->isVisible() || !action->isEnabled())
        return false;
    action->trigger();
    return true;
}
