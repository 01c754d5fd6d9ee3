#include "nonvolatilememory.h"

#include "core/savefile.h"

#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QStandardPaths>
#include <QtDebug>

#include <stdexcept>

NonVolatileMemory::NonVolatileMemory(const std::string& cameraId)
{
    QString safe = QString::fromStdString(cameraId);
    safe.replace(QRegularExpression("[^A-Za-z0-9_.-]"), "_");
    const QString base = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation);
    m_path = base + "/kalto-emulator/" + safe + ".json";
}

std::string NonVolatileMemory::set(const std::string& name) const
{
    const auto it = m_sets.find(name);
    return it == m_sets.end() ? std::string() : it->second;
}

void NonVolatileMemory::load()
{
    m_sets.clear();
    m_startupSet = "Default";
    QFile file(m_path);
    if (!file.exists())
        return;
    if (!file.open(QIODevice::ReadOnly) || file.size() > 64 * 1024 * 1024) {
        qWarning("camera memory %s unreadable; starting empty", qPrintable(m_path));
        return;
    }
    QJsonParseError error;
    const QJsonDocument doc = QJsonDocument::fromJson(file.readAll(), &error);
    if (!doc.isObject()) {
        qWarning("camera memory %s damaged (%s); starting empty", qPrintable(m_path),
                 qPrintable(error.errorString()));
        return;
    }
    const QJsonObject root = doc.object();
    m_startupSet = root.value("startupSet").toString("Default").toStdString();
    const QJsonObject sets = root.value("userSets").toObject();
    for (auto it = sets.begin(); it != sets.end(); ++it)
        if (it.value().isString())
            m_sets[it.key().toStdString()] = it.value().toString().toStdString();
}

void NonVolatileMemory::save() const
{
    QJsonObject sets;
    for (const auto& [name, text] : m_sets)
        sets.insert(QString::fromStdString(name), QString::fromStdString(text));
    const QJsonObject root{{"startupSet", QString::fromStdString(m_startupSet)}, {"userSets", sets}};
    QDir().mkpath(QFileInfo(m_path).absolutePath());
    QString error;
    if (!Core::saveFile(m_path, QJsonDocument(root).toJson(), &error))
        throw std::runtime_error("cannot write camera memory " + m_path.toStdString() + ": " + error.toStdString());
}
