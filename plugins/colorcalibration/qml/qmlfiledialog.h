#pragma once

#include <QList>
#include <QQuickItem>
#include <QString>
#include <QStringList>
#include <QUrl>

class QFileDialog;

/// A native file dialog for QML ("QMLFileDialog" of "com.ostrel.filedialog").
class QMLFileDialog : public QQuickItem {
    Q_OBJECT
    Q_PROPERTY(QUrl fileUrl READ fileUrl NOTIFY fileUrlChanged)
    Q_PROPERTY(QList<QUrl> fileUrls READ fileUrls NOTIFY fileUrlsChanged)
    Q_PROPERTY(QUrl folder READ folder WRITE setFolder NOTIFY folderChanged)
    Q_PROPERTY(QString title READ title WRITE setTitle NOTIFY titleChanged)
    Q_PROPERTY(QStringList nameFilters READ nameFilters WRITE setNameFilters NOTIFY nameFiltersChanged)
    Q_PROPERTY(bool selectMultiple READ selectMultiple WRITE setSelectMultiple NOTIFY selectMultipleChanged)
    Q_PROPERTY(bool selectFolder READ selectFolder WRITE setSelectFolder NOTIFY selectFolderChanged)
public:
    explicit QMLFileDialog(QQuickItem* parent = nullptr);

    QUrl fileUrl() const;
    QList<QUrl> fileUrls() const;
    QUrl folder() const;
    void setFolder(const QUrl& folder);
    QString title() const;
    void setTitle(const QString& title);
    QStringList nameFilters() const;
    void setNameFilters(const QStringList& filters);
    bool selectMultiple() const;
    void setSelectMultiple(bool multiple);
    bool selectFolder() const;
    void setSelectFolder(bool folder);

    /// Runs the dialog modally.
    Q_INVOKABLE void open();

signals:
    void fileUrlChanged();
    void fileUrlsChanged();
    void folderChanged();
    void titleChanged();
    void nameFiltersChanged();
    void selectMultipleChanged();
    void selectFolderChanged();
    void accepted();
    void rejected();
    void validChanged();

public slots:
    void onAccept();
    void onReject();

private:
    /// The dialog open() runs; null otherwise.
    QFileDialog* m_dialog = nullptr;
    QUrl m_fileUrl;
    QList<QUrl> m_fileUrls;
    QUrl m_folder;
    QString m_title;
    QStringList m_nameFilters;
    bool m_selectMultiple = false;
    bool m_selectFolder = false;
};
