#include "colorcorrectiontooldlg.h"

#include "colorcorrectionmodel.h"
#include "qmldatamodelinterface.h"

#include <QApplication>
#include <QHBoxLayout>
#include <QMessageBox>
#include <QPixmap>
#include <QQuickView>

ColorCorrectionToolDlg::ColorCorrectionToolDlg(QmlDataModelInterface* qml, QWidget* parent)
    : QDialog(parent, Qt::Window | Qt::WindowMaximizeButtonHint | Qt::WindowSystemMenuHint |
                          Qt::WindowCloseButtonHint | Qt::CustomizeWindowHint),
      qmlInterface(qml),
      viewContainer(nullptr)
{
    setWindowFlags(Qt::Dialog | Qt::WindowTitleHint);

    connect(this, &QDialog::finished, this, &ColorCorrectionToolDlg::onDialogFinish);
    connect(qmlInterface, &QmlDataModelInterface::signalCancel, this, &QWidget::close);
    connect(qmlInterface, &QmlDataModelInterface::signalFinished, this, &QWidget::close);
    connect(qmlInterface, &QmlDataModelInterface::forwardCameraRemoved, this,
            &ColorCorrectionToolDlg::onCameraRemoved);
    connect(qmlInterface, &QmlDataModelInterface::forwardImageGrabFailed, this,
            &ColorCorrectionToolDlg::onImageGrabFailed);
    connect(qmlInterface, &QmlDataModelInterface::forwardLogMessage, this,
            QOverload<QString, Core::Logging::ELogLevel>::of(&ColorCorrectionToolDlg::addLogMessage));

    viewContainer = QWidget::createWindowContainer(qmlInterface->view(), this);
    viewContainer->setMinimumSize(800, 750);
    viewContainer->setMaximumSize(2000, 2000);
    viewContainer->setFocusPolicy(Qt::TabFocus);

    auto* layout = new QHBoxLayout;
    layout->setSpacing(0);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(viewContainer);
    setLayout(layout);
}

ColorCorrectionToolDlg::~ColorCorrectionToolDlg() = default;

void ColorCorrectionToolDlg::addLogMessage(QString message, Core::Logging::ELogLevel level)
{
    const QByteArray source = tr("kalto Color Calibrator").toUtf8();
    const QByteArray text = message.toUtf8();
    switch (level) {
    case Core::Logging::LogLevelDebug:
        qDebug("@{%s};%s", source.constData(), text.constData());
        break;
    case Core::Logging::LogLevelInfo:
        qInfo("@{%s};%s", source.constData(), text.constData());
        break;
    case Core::Logging::LogLevelWarning:
        qWarning("@{%s};%s", source.constData(), text.constData());
        break;
    case Core::Logging::LogLevelError:
    case Core::Logging::LogLevelFatal:
        qCritical("@{%s};%s", source.constData(), text.constData());
        break;
    default:
        break;
    }
}

void ColorCorrectionToolDlg::addLogMessage(QString message)
{
    addLogMessage(message, Core::Logging::LogLevelInfo);
}

void ColorCorrectionToolDlg::onImageGrabFailed()
{
    addLogMessage(tr("Image acquisition is slowed down by certain parameter settings in the camera, "
                     "e.g., exposure time."),
                  Core::Logging::LogLevelWarning);
}

void ColorCorrectionToolDlg::onCameraRemoved()
{
    QMessageBox box(QMessageBox::NoIcon, tr("Color Calibrator"),
                    tr("<p>The camera has been disconnected.<br/>Reconnect the camera to the computer "
                       "and open it to continue using the Color Calibrator.</p>"),
                    QMessageBox::Ok, QApplication::activeWindow());
    box.setIconPixmap(QPixmap(QStringLiteral(":/kaltoviewercomponents/Resources/Error_32.png")));
    box.exec();
    close();
}

void ColorCorrectionToolDlg::onDialogFinish(int)
{
    emit qmlInterface->cleanupQML();
    if (ColorCorrectionModel* model = qmlInterface->model())
        model->Close();
}
