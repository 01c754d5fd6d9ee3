#include "originalimageprovider.h"

#include "colorcorrectionmodel.h"

#include <QMutexLocker>

OriginalImageProvider::OriginalImageProvider(ColorCorrectionModel* model)
    : QQuickImageProvider(QQuickImageProvider::Image, QQmlImageProviderBase::ForceAsynchronousImageLoading),
      m_model(model)
{
}

// Requests come from QML's image loader thread.
QImage OriginalImageProvider::requestImage(const QString&, QSize* size, const QSize&)
{
    QMutexLocker lock(&m_mutex);
    if (size)
        *size = m_image.size();
    return m_image.copy();
}

void OriginalImageProvider::grabOriginalImage()
{
    QImage image;
    m_model->GetCameraInitialImage(image);
    QMutexLocker lock(&m_mutex);
    m_image = image;
    m_counter = 1 - m_counter;
}

void OriginalImageProvider::reset()
{
    QMutexLocker lock(&m_mutex);
    m_counter = 0;
    m_image = QImage();
}

int OriginalImageProvider::counter() const
{
    QMutexLocker lock(&m_mutex);
    return m_counter;
}

int OriginalImageProvider::generation() const
{
    return m_generation;
}
