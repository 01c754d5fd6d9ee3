#include "logdock.h"

#include <QDateTime>
#include <QHeaderView>
#include <QMutex>
#include <QPointer>
#include <QRegularExpression>
#include <QTreeWidget>

namespace {

QMutex g_mutex;
QPointer<LogDock> g_dock;
QtMessageHandler g_previous = nullptr;

QString levelText(int type)
{
    switch (type) {
    case QtDebugMsg: return LogDock::tr("Debug");
    case QtInfoMsg: return LogDock::tr("Info");
    case QtWarningMsg: return LogDock::tr("Warning");
    default: return LogDock::tr("Error");
    }
}

}  // namespace

LogDock::LogDock(QWidget* parent) : QDockWidget(tr("Log"), parent), m_list(new QTreeWidget(this))
{
    setObjectName(QStringLiteral("logDock"));
    m_list->setObjectName(QStringLiteral("logList"));
    m_list->setAccessibleName(tr("Log"));
    m_list->setRootIsDecorated(false);
    m_list->setHeaderLabels({tr("Time"), tr("Level"), tr("Source"), tr("Message")});
    m_list->header()->setSectionResizeMode(QHeaderView::ResizeToContents);
    m_list->header()->setStretchLastSection(true);
    setWidget(m_list);

    QMutexLocker lock(&g_mutex);
    g_dock = this;
    g_previous = qInstallMessageHandler(&LogDock::handler);
}

LogDock::~LogDock()
{
    QMutexLocker lock(&g_mutex);
    qInstallMessageHandler(g_previous);
    g_dock = nullptr;
}

bool LogDock::parse(const QString& line, QString* source, QString* message)
{
    static const QRegularExpression tagged(QStringLiteral("^@\\{([^}]*)\\};(.*)$"),
                                           QRegularExpression::DotMatchesEverythingOption);
    const QRegularExpressionMatch m = tagged.match(line);
    if (!m.hasMatch())
        return false;
    *source = m.captured(1);
    *message = m.captured(2);
    return true;
}

void LogDock::handler(QtMsgType type, const QMessageLogContext& context, const QString& text)
{
    QtMessageHandler previous;
    QPointer<LogDock> dock;
    {
        QMutexLocker lock(&g_mutex);
        previous = g_previous;
        dock = g_dock;
    }
    if (previous)
        previous(type, context, text);

    QString source, message;
    if (!dock || !parse(text, &source, &message))
        return;
    // The texts may carry HTML line breaks and paragraphs; a list row wants one line.
    message.replace(QRegularExpression(QStringLiteral("<[^>]*>")), QStringLiteral(" "));
    QMetaObject::invokeMethod(
        dock.data(), [dock, type, source, message = message.simplified()] {
            if (dock)
                dock->append(type, source, message);
        },
        Qt::QueuedConnection);
}

void LogDock::append(int type, const QString& source, const QString& message)
{
    auto* item = new QTreeWidgetItem(
        m_list, {QTime::currentTime().toString(QStringLiteral("HH:mm:ss")), levelText(type), source, message});
    item->setToolTip(3, message);
    m_list->scrollToItem(item);
}
