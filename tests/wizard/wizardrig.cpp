#include "wizardrig.h"

#include "calibrationresult.h"
#include "colorcorrectionmodel.h"
#include "colorcorrectiontooldlg.h"
#include "core/alocalizedplugin.h"
#include "emulatedpool.h"
#include "qmldatamodelinterface.h"
#include "qmltrapezoid.h"
#include "qmltrapezoidlist.h"

#include <QCoreApplication>
#include <QGuiApplication>
#include <QDir>
#include <QImage>
#include <QPixmap>
#include <QScreen>
#include <QQmlProperty>
#include <QQuickItem>
#include <QQmlContext>
#include <QQuickView>
#include <QSignalSpy>
#include <QWidget>
#include <QTest>
#include <QCloseEvent>
#include <QPluginLoader>

#include <stdexcept>

namespace {

// Items and popups of the QML tree: QObject children and visual children both,
// since popups live in the window's overlay.
void collect(QObject* object, QList<QObject*>& all)
{
    if (!object || all.contains(object))
        return;
    all.append(object);
    for (QObject* child : object->children())
        collect(child, all);
    if (auto* item = qobject_cast<QQuickItem*>(object))
        for (QQuickItem* child : item->childItems())
            collect(child, all);
}

bool reallyVisible(QQuickItem* item)
{
    return item && item->isVisible() && item->opacity() > 0 && item->width() > 0 && item->height() > 0;
}

}  // namespace

QJsonObject colourSettings(QString settingsText)
{
    CalibrationResult parser("check");
    QString filtered = parser.FilterSettings(settingsText);
    return parser.ParseSettings(filtered);
}

WizardRig::WizardRig(const QString& cameraId, const QString& language)
    : m_pool(std::make_unique<EmulatedPool>()), m_cameraId(cameraId)
{
    // The live image is a video output, which only the OpenGL scene graph
    // draws; in a real X server (xvfb-run) use it instead of the software one.
    if (QGuiApplication::platformName() == "xcb")
        qunsetenv("QT_QUICK_BACKEND");
    m_pool->setFrameSize(cameraId, kFrameWidth, kFrameHeight);

    m_plugin = std::make_unique<QPluginLoader>(QStringLiteral(COLCAL_PLUGIN_FILE));
    auto* plugin = qobject_cast<Core::Plugin::ALocalizedPlugin*>(m_plugin->instance());
    if (!plugin)
        throw std::runtime_error("plug-in not loaded: " + m_plugin->errorString().toStdString());
    if (!plugin->setLanguage(language) && language != "en")
        throw std::runtime_error("no catalogue for " + language.toStdString());

    m_model = m_pool->createModel();
    if (!m_model->Open(m_pool->info(cameraId)))
        throw std::runtime_error("cannot open " + cameraId.toStdString());
    m_facade = std::make_unique<QmlDataModelInterface>(m_model.get());
    QObject::connect(m_facade.get(), &QmlDataModelInterface::forwardLogMessage,
                     [this](const QString& message, Core::Logging::ELogLevel) { m_log << message; });
    m_ownDialog = std::make_unique<ColorCorrectionToolDlg>(m_facade.get(), nullptr);
    m_dialog = m_ownDialog.get();
    m_view = m_facade->view();
    m_dialog->resize(800, 750);
    m_dialog->show();
    m_dialog->activateWindow();
    if (!QTest::qWaitForWindowActive(m_dialog))
        throw std::runtime_error("the calibrator window does not come up");
    watch();
}

WizardRig::WizardRig(QQuickView& view, QDialog& window) : m_view(&view), m_dialog(&window)
{
    watch();
}

void WizardRig::watch()
{
    QObject* facade = m_view->rootContext()->contextProperty("qmlModelInterface").value<QObject*>();
    if (!facade)
        throw std::runtime_error("the window shows no wizard");
    m_finished = std::make_unique<QSignalSpy>(facade, SIGNAL(signalFinished()));
    m_cancelled = std::make_unique<QSignalSpy>(facade, SIGNAL(signalCancel()));
    QObject::connect(m_dialog, &QDialog::finished, [this] { m_closed = true; });
    if (!waitForStep(1))
        throw std::runtime_error("the wizard does not show step 1");
    // Into the window, on its title, as a person starts.
    click("stepTitle");
}

WizardRig::~WizardRig()
{
    if (m_dialog && m_dialog->isVisible())
        closeByFrame();
    m_finished.reset();
    m_cancelled.reset();
    // The dialog's window container would delete the view the facade owns.
    m_facade.reset();
    m_ownDialog.reset();
    m_model.reset();
    if (!m_plugin)
        return;
    if (auto* plugin = qobject_cast<Core::Plugin::ALocalizedPlugin*>(m_plugin->instance()))
        plugin->setLanguage("en");
}

QString WizardRig::ended() const
{
    if (m_finished && !m_finished->isEmpty())
        return "finish";
    return m_cancelled && !m_cancelled->isEmpty() ? "cancel" : "";
}

QString WizardRig::settingsText()
{
    return m_pool->settingsText(m_cameraId);
}

QObject* WizardRig::find(const QString& objectName) const
{
    QList<QObject*> all;
    collect(m_view->contentItem(), all);
    QObject* hidden = nullptr;
    for (QObject* o : all) {
        if (o->objectName() != objectName)
            continue;
        auto* item = qobject_cast<QQuickItem*>(o);
        if (!item || reallyVisible(item))
            return o;
        hidden = o;
    }
    return hidden;
}

QQuickItem* WizardRig::item(const QString& objectName) const
{
    return qobject_cast<QQuickItem*>(find(objectName));
}

QQuickItem* WizardRig::itemWithText(const QString& text) const
{
    QList<QObject*> all;
    collect(m_view->contentItem(), all);
    for (QObject* o : all) {
        auto* item = qobject_cast<QQuickItem*>(o);
        if (reallyVisible(item) && item->property("text").toString() == text
            && item->metaObject()->indexOfProperty("checkable") >= 0)
            return item;
    }
    return nullptr;
}

QVariant WizardRig::property(const QString& objectName, const char* name) const
{
    QObject* o = find(objectName);
    return o ? o->property(name) : QVariant();
}

void WizardRig::click(QQuickItem* item)
{
    if (!item)
        throw std::runtime_error("nothing to click");
    const QPointF centre = item->mapToScene(QPointF(item->width() / 2, item->height() / 2));
    QTest::mouseClick(&view(), Qt::LeftButton, Qt::NoModifier, centre.toPoint());
    QCoreApplication::processEvents();
}

void WizardRig::click(const QString& objectName)
{
    QQuickItem* target = item(objectName);
    if (!target)
        throw std::runtime_error("no item " + objectName.toStdString());
    click(target);
}

void WizardRig::key(int key, int modifiers)
{
    QTest::keyClick(&view(), Qt::Key(key), Qt::KeyboardModifiers(modifiers));
    QCoreApplication::processEvents();
}

void WizardRig::type(const QString& text)
{
    for (const QChar c : text)
        QTest::keyClick(&view(), c.toLatin1());
    QCoreApplication::processEvents();
}

bool WizardRig::waitFor(const std::function<bool()>& done, int timeoutMs)
{
    return QTest::qWaitFor(done, timeoutMs);
}

int WizardRig::activeStep() const
{
    return m_view->rootObject()->property("activeStep").toInt();
}

bool WizardRig::controlsEnabled() const
{
    return m_view->rootObject()->property("controlsEnabled").toBool();
}

QString WizardRig::messageText() const
{
    QObject* box = find("messageBox");
    if (!box || !box->property("visible").toBool())
        return QString();
    return box->property("text").toString();
}

QString WizardRig::messageTitle() const
{
    QObject* box = find("messageBox");
    return box ? box->property("title").toString() : QString();
}

bool WizardRig::waitForMessage(int timeoutMs)
{
    return waitFor([this] { return !messageText().isEmpty(); }, timeoutMs);
}

void WizardRig::answerMessage(const QString& button)
{
    QObject* box = find("messageBox");
    if (!box || !box->property("visible").toBool())
        throw std::runtime_error("no message box is open");
    QTest::qWait(50);  // the box's open transition
    click(button);
    waitFor([box] { return !box->property("visible").toBool(); }, 5000);
    QTest::qWait(50);
}

bool WizardRig::waitForStep(int step, int timeoutMs)
{
    return waitFor(
        [this, step] { return activeStep() == step && controlsEnabled() && messageText().isEmpty(); }, timeoutMs);
}

bool WizardRig::positionGridAutomatically()
{
    click("autoPositionButton");
    if (!waitFor([this] { return !controlsEnabled() || !messageText().isEmpty(); }, 2000))
        return false;
    return waitFor([this] { return controlsEnabled() || !messageText().isEmpty(); });
}

bool WizardRig::autoBrightness()
{
    click("autoButton");
    return waitFor([this] { return !controlsEnabled(); }, 5000) &&
           waitFor([this] { return controlsEnabled(); }, 180000);
}

void WizardRig::chooseFolder(const QString& option, const QString& folder)
{
    click(option + "Check");
    click(option + "Folder");
    key(Qt::Key_A, Qt::ControlModifier);
    type(folder);
}

bool WizardRig::saveToFoldersAndFirstUserSet(const QString& root)
{
    chooseFolder("saveSettings", root + "/settings");
    chooseFolder("saveSummary", root + "/summary");
    click("userSetChoice");
    key(Qt::Key_Down);
    key(Qt::Key_Return);
    if (!waitFor([this] { return property("userSetChoice", "currentIndex").toInt() == 1; }, 5000))
        return false;
    click("saveButton");
    return waitFor([this] { return property("saveStatus", "visible").toBool(); }, 60000);
}

bool WizardRig::next()
{
    const int from = activeStep();
    click("nextButton");
    return waitFor([this, from] {
        return !messageText().isEmpty() || (activeStep() == from + 1 && controlsEnabled());
    }, 180000);
}

void WizardRig::hoverPatch(int index)
{
    QQuickItem* frame = item("imageFrame");
    QmlTrapezoid* patch = m_facade->grid()->trapezoidAt(index);
    if (!frame || !patch)
        throw std::runtime_error("no patch to point at");
    const QPointF scene = frame->mapToScene(QPointF(patch->center()) + QPointF(4, 6));
    QTest::mouseMove(&view(), scene.toPoint() + QPoint(-2, -2));
    QTest::mouseMove(&view(), scene.toPoint());
    QTest::qWait(50);
}

bool WizardRig::waitForLiveImage(int timeoutMs)
{
    QObject* camera = m_view->rootContext()->contextProperty("camera").value<QObject*>();
    if (!camera)
        return false;
    QSignalSpy frames(camera, SIGNAL(imageChanged()));
    return frames.wait(timeoutMs);
}

void WizardRig::screenshot(const QString& name)
{
    QTest::qWait(300);  // a few live frames
    const QString dir = QStringLiteral(COLCAL_SCREENSHOT_DIR);
    QDir().mkpath(dir);
    // The software scene graph hands its frames to the platform's backing
    // store; the offscreen platform grabs from there.
    QImage image = view().grabWindow();
    if (image.isNull())
        image = view().screen()->grabWindow(view().winId()).toImage();
    if (image.isNull() || !image.save(dir + "/" + name + ".png"))
        qWarning("screenshot %s not written", qPrintable(name));
}

bool WizardRig::waitForWindowClosed(int timeoutMs)
{
    return waitFor([this] { return m_closed && (!m_dialog || !m_dialog->isVisible()); }, timeoutMs);
}

void WizardRig::closeByFrame()
{
    QCloseEvent close;
    QCoreApplication::sendEvent(m_dialog->windowHandle(), &close);
    waitForWindowClosed(5000);
}
