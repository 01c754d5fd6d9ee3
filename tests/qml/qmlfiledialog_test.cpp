#include "qmlfiledialog.h"

#include "guitestapp.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QSignalSpy>
#include <QTimer>

#include <functional>

namespace {

/// Runs `act` on the dialog once open() shows it modally.
void whenShown(const std::function<void(QFileDialog&)>& act)
{
    QTimer::singleShot(0, [act] {
        auto* dialog = qobject_cast<QFileDialog*>(QApplication::activeModalWidget());
        ASSERT_NE(dialog, nullptr);
        act(*dialog);
    });
}

QString makeFile(const QString& name)
{
    const QString path = QDir(GuiTestApp::sandbox()).filePath(name);
    QFile file(path);
    file.open(QIODevice::WriteOnly);
    file.write("x");
    return path;
}

struct ModeRow {
    bool selectFolder;
    bool selectMultiple;
    QFileDialog::FileMode mode;
};

class QMLFileDialogMode : public ::testing::TestWithParam<ModeRow> {};

QT_WARNING_PUSH
QT_WARNING_DISABLE_DEPRECATED
TEST_P(QMLFileDialogMode, OpensTheDialogTheItemDescribes)
{
    const ModeRow row = GetParam();
    QMLFileDialog item;
    item.setSelectFolder(row.selectFolder);
    item.setSelectMultiple(row.selectMultiple);
    item.setTitle("Load previous calibration");
    item.setFolder(QUrl::fromLocalFile(GuiTestApp::sandbox()));
    item.setNameFilters({"Camera settings (*.pfs)"});
    QSignalSpy rejected(&item, &QMLFileDialog::rejected);
    QFileDialog::FileMode seen = QFileDialog::AnyFile;
    QString title;
    QString folder;
    QStringList filters;
    whenShown([&](QFileDialog& dialog) {
        seen = dialog.fileMode();
        title = dialog.windowTitle();
        folder = dialog.directory().absolutePath();
        filters = dialog.nameFilters();
        dialog.reject();
    });
    item.open();
    EXPECT_EQ(seen, row.mode);
    EXPECT_EQ(title, "Load previous calibration");
    EXPECT_EQ(folder, QDir(GuiTestApp::sandbox()).absolutePath());
    EXPECT_EQ(filters, QStringList({"Camera settings (*.pfs)"}));
    EXPECT_EQ(rejected.count(), 1);
}

INSTANTIATE_TEST_SUITE_P(Rows, QMLFileDialogMode,
                         ::testing::Values(ModeRow{true, true, QFileDialog::DirectoryOnly},
                                           ModeRow{false, true, QFileDialog::ExistingFiles},
                                           ModeRow{false, false, QFileDialog::ExistingFile}));
QT_WARNING_POP

TEST(QMLFileDialog, AcceptingPublishesTheChosenFiles)
{
    const QString first = makeFile("first.pfs");
    const QString second = makeFile("second.pfs");
    QMLFileDialog item;
    item.setSelectMultiple(true);
    item.setFolder(QUrl::fromLocalFile(GuiTestApp::sandbox()));
    QSignalSpy accepted(&item, &QMLFileDialog::accepted);
    QSignalSpy url(&item, &QMLFileDialog::fileUrlChanged);
    whenShown([&](QFileDialog& dialog) {
        dialog.selectFile("\"first.pfs\" \"second.pfs\"");
        QMetaObject::invokeMethod(&dialog, "accept");
    });
    item.open();
    EXPECT_EQ(accepted.count(), 1);
    EXPECT_EQ(url.count(), 1);
    EXPECT_EQ(item.fileUrls(), QList<QUrl>({QUrl::fromLocalFile(first), QUrl::fromLocalFile(second)}));
    EXPECT_EQ(item.fileUrl(), QUrl::fromLocalFile(first));
}

}  // namespace
