#pragma once

#include <QImage>
#include <QMutex>
#include <QQuickImageProvider>

class ColorCorrectionModel;

/// Serves the camera's frozen original image to QML ("cameraImageOriginal"),
/// whatever the id. Each grab flips a counter so that the URL changes.
class OriginalImageProvider : public QQuickImageProvider {
public:
    explicit OriginalImageProvider(ColorCorrectionModel* model);

    QImage requestImage(const QString& id, QSize* size, const QSize& requestedSize) override;
    void grabOriginalImage();
    void reset();
    /// 0 or 1.
    int counter() const;
    int generation() const;

private:
    ColorCorrectionModel* m_model;
    mutable QMutex m_mutex;
    int m_counter = 0;
    int m_generation = 0;
    QImage m_image;
};
