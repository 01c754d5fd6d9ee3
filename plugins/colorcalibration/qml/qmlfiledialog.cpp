#include "qmlfiledialog.h"

#include <QFileDialog>

QMLFileDialog::QMLFileDialog(QQuickItem* parent) : QQuickItem(parent) {}

QUrl QMLFileDialog::fileUrl() const
{
    return m_fileUrl;
}

QList<QUrl> QMLFileDialog::fileUrls() const
{
    return m_fileUrls;
}

QUrl QMLFileDialog::folder() const
{
    return m_folder;
}

void QMLFileDialog::setFolder(const QUrl& folder)
{
    if (folder == m_folder)
        return;
    m_folder = folder;
    emit folderChanged();
}

QString QMLFileDialog::title() const
{
    return m_title;
}

void QMLFileDialog::setTitle(const QString& title)
{
    if (title == m_title)
        return;
    m_title = title;
    emit titleChanged();
}

QStringList QMLFileDialog::nameFilters() const
{
    return m_nameFilters;
}

void QMLFileDialog::setNameFilters(const QStringList& filters)
{
    if (filters == m_nameFilters)
        return;
    m_nameFilters = filters;
    emit nameFiltersChanged();
}

bool QMLFileDialog::selectMultiple() const
{
    return m_selectMultiple;
}

void QMLFileDialog::setSelectMultiple(bool multiple)
{
    if (multiple == m_selectMultiple)
        return;
    m_selectMultiple = multiple;
    emit selectMultipleChanged();
}

bool QMLFileDialog::selectFolder() const
{
    return m_selectFolder;
}

void QMLFileDialog::setSelectFolder(bool folder)
{
    if (folder == m_selectFolder)
        return;
    m_selectFolder = folder;
    emit selectFolderChanged();
}

void QMLFileDialog::open()
{
    QFileDialog dialog;
    // The folder picker the wizard was built around; Qt deprecates the mode but keeps it.
    QT_WARNING_PUSH
    QT_WARNING_DISABLE_DEPRECATED
    if (m_selectFolder)
        dialog.setFileMode(QFileDialog::DirectoryOnly);
    else if (m_selectMultiple)
        dialog.setFileMode(QFileDialog::ExistingFiles);
    else
        dialog.setFileMode(QFileDialog::ExistingFile);
    QT_WARNING_POP
    dialog.setWindowTitle(m_title);
    dialog.setDirectoryUrl(m_folder);
    dialog.setNameFilters(m_nameFilters);
    connect(&dialog, &QDialog::accepted, this, &QMLFileDialog::onAccept);
    connect(&dialog, &QDialog::rejected, this, &QMLFileDialog::onReject);
    m_dialog = &dialog;
    dialog.exec();
    m_dialog = nullptr;
}

void QMLFileDialog::onAccept()
{
    const QList<QUrl> urls = m_dialog ? m_dialog->selectedUrls() : QList<QUrl>();
    const QUrl first = urls.isEmpty() ? QUrl() : urls.first();
    if (first != m_fileUrl) {
        m_fileUrl = first;
        emit fileUrlChanged();
    }
    if (urls != m_fileUrls) {
        m_fileUrls = urls;
        emit fileUrlsChanged();
    }
    emit accepted();
}

void QMLFileDialog::onReject()
{
    emit rejected();
}
