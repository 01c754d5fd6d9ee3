#pragma once

#include "core/eloglevel.h"

#include <QDialog>

class QmlDataModelInterface;

/// The calibrator's window: hosts the wizard's view, closes when the wizard
/// ends, and turns the wizard's log messages into "@{source};message" lines.
/// Every way of closing it releases the camera.
class ColorCorrectionToolDlg : public QDialog {
    Q_OBJECT
public:
    /// `qmlInterface` is not owned. Its view is embedded here, and a window
    /// container deletes what it holds: delete the facade (and so its view)
    /// before the dialog.
    ColorCorrectionToolDlg(QmlDataModelInterface* qmlInterface, QWidget* parent);
    ~ColorCorrectionToolDlg() override;

public slots:
    void onDialogFinish(int result);
    void onCameraRemoved();
    void onImageGrabFailed();
    /// Levels outside 0..4 are dropped.
    void addLogMessage(QString message, Core::Logging::ELogLevel level);
    void addLogMessage(QString message);

private:
    QmlDataModelInterface* qmlInterface;
    QWidget* viewContainer;
};
