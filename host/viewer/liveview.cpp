#include "liveview.h"

#include "viewerhost.h"
#include "viewerlog.h"

#include "camerapool/camerapool.h"
#include "kalto/grabresultptr.h"
#include "kalto/imageformatconverter.h"

#include <QAction>
#include <QLabel>
#include <QTimer>
#include <QToolBar>
#include <QVBoxLayout>

namespace {

constexpr int SingleShotTimeoutMs = 5000;

void logWarning(const QString& text)
{
    qCWarning(viewerLog, "@{%s};%s", qPrintable(QObject::tr("Live view")), text.toUtf8().constData());
}

}  // namespace

LiveView::LiveView(ViewerHost& host, QWidget* parent)
    : QWidget(parent),
      m_host(host),
      m_display(new QLabel(this)),
      m_status(new QLabel(this)),
      m_singleShot(new QAction(tr("Single Shot"), this)),
      m_continuous(new QAction(tr("Continuous Shot"), this)),
      m_stop(new QAction(tr("Stop"), this))
{
    setObjectName(QStringLiteral("liveView"));
    auto* toolbar = new QToolBar(this);
    toolbar->setObjectName(QStringLiteral("acquisitionToolBar"));
    toolbar->addAction(m_singleShot);
    toolbar->addAction(m_continuous);
    toolbar->addAction(m_stop);
    m_singleShot->setObjectName(QStringLiteral("singleShot"));
    m_continuous->setObjectName(QStringLiteral("continuousShot"));
    m_stop->setObjectName(QStringLiteral("stop"));
    m_singleShot->setShortcut(QKeySequence(Qt::Key_F5));
    m_continuous->setShortcut(QKeySequence(Qt::Key_F6));
    m_stop->setShortcut(QKeySequence(Qt::Key_F7));

    m_display->setAlignment(Qt::AlignCenter);
    m_display->setMinimumSize(320, 200);
    m_display->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Ignored);
    m_display->setStyleSheet(QStringLiteral("background: #202124; color: #bdc1c6;"));
    m_display->setText(tr("No camera open. Double-click a camera in the camera list."));
    m_display->setAccessibleName(tr("Live image"));

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(toolbar);
    layout->addWidget(m_display, 1);
    layout->addWidget(m_status);

    connect(m_singleShot, &QAction::triggered, this, [this] {
        if (m_camera)
            m_camera->grabOne(SingleShotTimeoutMs);
        updateActions();
    });
    connect(m_continuous, &QAction::triggered, this, [this] {
        if (m_camera)
            m_camera->startGrabbing();
        updateActions();
    });
    connect(m_stop, &QAction::triggered, this, [this] {
        if (m_camera)
            m_camera->stopGrabbing();
        updateActions();
    });
    // Others (a plug-in) may start or stop the camera too.
    auto* poll = new QTimer(this);
    connect(poll, &QTimer::timeout, this, &LiveView::updateActions);
    poll->start(500);
    updateActions();
}

LiveView::~LiveView()
{
    closeCamera();
}

bool LiveView::openCamera(QSharedPointer<Plugin::CameraPool::ICameraInfo> info)
{
    if (m_camera && m_camera->cameraInfo() == info)
        return true;
    closeCamera();
    if (!info)
        return false;
    auto camera = m_host.pool().open(info, false);
    if (!camera) {
        logWarning(tr("%1 could not be opened: %2").arg(info->displayText(), info->errorDescription()));
        return false;
    }
    m_camera = camera;
    // Direct: the frame is only handed over here, on the delivery thread.
    connect(m_camera.data(), &Plugin::CameraPool::ICamera::cameraImageGrabbed, this,
            [this](const Kalto::CGrabResultPtr& result) { onGrabbed(result); }, Qt::DirectConnection);
    connect(m_camera.data(), &Plugin::CameraPool::ICamera::cameraConnectionLost, this,
            [this] { QMetaObject::invokeMethod(this, [this] { closeCamera(); }, Qt::QueuedConnection); },
            Qt::DirectConnection);
    m_status->setText(tr("%1 open").arg(info->identifyingText()));
    // One frame at once, so the user sees what the camera looks at.
    m_camera->grabOne(SingleShotTimeoutMs);
    updateActions();
    return true;
}

void LiveView::closeCamera()
{
    if (!m_camera)
        return;
    disconnect(m_camera.data(), nullptr, this, nullptr);
    try {
        if (m_camera->isGrabbing())
            m_camera->stopGrabbing();
    } catch (const std::exception&) {
        // Gone already: it grabs nothing any more.
    }
    m_host.pool().release(m_camera);
    m_camera.clear();
    {
        QMutexLocker lock(&m_latestMutex);
        m_latest.Release();
    }
    m_status->setText(tr("No camera open"));
    updateActions();
}

void LiveView::onGrabbed(const Kalto::CGrabResultPtr& result)
{
    QMutexLocker lock(&m_latestMutex);
    const bool post = !m_latest.IsValid();
    m_latest = result;
    if (post)
        QMetaObject::invokeMethod(this, [this] { showLatest(); }, Qt::QueuedConnection);
}

void LiveView::showLatest()
{
    Kalto::CGrabResultPtr result;
    {
        QMutexLocker lock(&m_latestMutex);
        result = m_latest;
        m_latest.Release();
    }
    updateActions();
    if (!result.IsValid())
        return;
    if (!result->GrabSucceeded()) {
        m_status->setText(tr("Grab failed: %1").arg(QString::fromStdString(result->GetErrorDescription())));
        return;
    }
    QImage image(int(result->GetWidth()), int(result->GetHeight()), QImage::Format_RGB32);
    try {
        Kalto::CImageFormatConverter converter;
        converter.OutputPixelFormat = Kalto::PixelType_BGRA8packed;
        converter.OutputPaddingX = size_t(image.bytesPerLine()) - size_t(image.width()) * 4;
        converter.Convert(image.bits(), size_t(image.sizeInBytes()), result);
    } catch (const std::exception& e) {
        m_status->setText(tr("Image not shown: %1").arg(QString::fromUtf8(e.what())));
        return;
    }
    m_image = image;
    showScaled();
    m_status->setText(tr("Image %1, %2 x %3")
                          .arg(result->GetImageNumber())
                          .arg(image.width())
                          .arg(image.height()));
    emit frameShown(result->GetImageNumber());
}

void LiveView::showScaled()
{
    if (m_image.isNull())
        return;
    m_display->setPixmap(QPixmap::fromImage(
        m_image.scaled(m_display->size(), Qt::KeepAspectRatio, Qt::SmoothTransformation)));
}

void LiveView::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    showScaled();
}

void LiveView::updateActions()
{
    const bool open = m_camera && m_camera->isOpen();
    const bool grabbing = open && m_camera->isGrabbing();
    m_singleShot->setEnabled(open && !grabbing);
    m_continuous->setEnabled(open && !grabbing);
    m_stop->setEnabled(grabbing);
}
