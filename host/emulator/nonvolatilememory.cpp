#include "nonvolatilememory.h"

#include "emulatorlog.h"

#include "core/savefile.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLockFile>
#include <QRegularExpression>
#include <QStandardPaths>

#include <stdexcept>

namespace {

using Contents = NonVolatileMemory::Contents;

constexpr qint64 kMaxFileBytes = 64 * 1024 * 1024;

enum class Read { Missing, Good, Damaged };

// `why` says what is wrong with a damaged file.
Read readFile(const QString& path, Contents& out, QByteArray* bytes, QString& why)
{
    out = Contents();
    QFile file(path);
    if (!file.exists())
        return Read::Missing;
    if (!file.open(QIODevice::ReadOnly)) {
        why = file.errorString();
        return Read::Damaged;
    }
    if (file.size() > kMaxFileBytes) {
        why = QStringLiteral("larger than %1 bytes").arg(kMaxFileBytes);
        return Read::Damaged;
    }
    const QByteArray data = file.readAll();
    QJsonParseError error;
    const QJsonDocument doc = QJsonDocument::fromJson(data, &error);
    if (!doc.isObject()) {
        why = error.error != QJsonParseError::NoError ? error.errorString() : QStringLiteral("not an object");
        return Read::Damaged;
    }
    const QJsonObject root = doc.object();
    const QJsonValue startup = root.value("startupSet");
    const QJsonValue sets = root.value("userSets");
    if (!startup.isString() || !sets.isObject()) {
        why = QStringLiteral("no startupSet or userSets");
        return Read::Damaged;
    }
    out.startupSet = startup.toString().toStdString();
    const QJsonObject setObject = sets.toObject();
    for (auto it = setObject.begin(); it != setObject.end(); ++it) {
        if (!it.value().isString()) {
            why = QStringLiteral("user set %1 is not text").arg(it.key());
            return Read::Damaged;
        }
        out.sets[it.key().toStdString()] = it.value().toString().toStdString();
    }
    if (bytes)
        *bytes = data;
    return Read::Good;
}

QByteArray serialise(const Contents& contents)
{
    QJsonObject sets;
    for (const auto& [name, text] : contents.sets)
        sets.insert(QString::fromStdString(name), QString::fromStdString(text));
    return QJsonDocument(QJsonObject{{"startupSet", QString::fromStdString(contents.startupSet)}, {"userSets", sets}})
        .toJson();
}

QString backupOf(const QString& path)
{
    return path + ".bak";
}

}  // namespace

NonVolatileMemory::NonVolatileMemory(const std::string& cameraId)
{
    QString safe = QString::fromStdString(cameraId);
    safe.replace(QRegularExpression("[^A-Za-z0-9_.-]"), "_");
    const QString base = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation);
    m_path = base + "/kalto-emulator/" + safe + ".json";
}

std::string NonVolatileMemory::set(const std::string& name) const
{
    const auto it = m_contents.sets.find(name);
    return it == m_contents.sets.end() ? std::string() : it->second;
}

void NonVolatileMemory::load()
{
    QString why, backupWhy;
    if (readFile(m_path, m_contents, nullptr, why) != Read::Damaged)
        return;
    if (readFile(backupOf(m_path), m_contents, nullptr, backupWhy) == Read::Good) {
        qCWarning(emulatorLog, "camera memory %s damaged (%s); using its backup", qPrintable(m_path), qPrintable(why));
        return;
    }
    qCWarning(emulatorLog, "camera memory %s damaged (%s) and no good backup; starting empty", qPrintable(m_path), qPrintable(why));
}

void NonVolatileMemory::storeSet(const std::string& name, const std::string& text)
{
    change([&](Contents& contents) { contents.sets[name] = text; });
}

void NonVolatileMemory::setStartupSet(const std::string& name)
{
    change([&](Contents& contents) { contents.startupSet = name; });
}

void NonVolatileMemory::change(const std::function<void(Contents&)>& edit)
{
    const std::string where = "camera memory " + m_path.toStdString();
    QDir().mkpath(QFileInfo(m_path).absolutePath());
    QLockFile lock(m_path + ".lock");
    if (!lock.tryLock(kLockTimeoutMs))
        throw std::runtime_error("cannot write " + where + ": another process holds its lock");

    Contents current;
    QByteArray currentBytes;
    QString why, backupWhy;
    switch (readFile(m_path, current, &currentBytes, why)) {
    case Read::Missing:
        break;
    case Read::Good: {
        QString error;
        if (!Core::saveFile(backupOf(m_path), currentBytes, &error))
            throw std::runtime_error("cannot write " + where + " backup: " + error.toStdString());
        break;
    }
    case Read::Damaged:
        if (readFile(backupOf(m_path), current, nullptr, backupWhy) != Read::Good)
            throw std::runtime_error(where + " is damaged (" + why.toStdString() +
                                     ") and has no good backup; not overwritten: move it away to start empty");
        QFile::remove(m_path + ".damaged");
        if (!QFile::rename(m_path, m_path + ".damaged"))
            throw std::runtime_error(where + " is damaged and cannot be moved aside");
        qCWarning(emulatorLog, "camera memory %s damaged (%s); kept as %s.damaged, continuing from its backup",
                  qPrintable(m_path), qPrintable(why), qPrintable(m_path));
        break;
    }
    edit(current);
    QString error;
    if (!Core::saveFile(m_path, serialise(current), &error))
        throw std::runtime_error("cannot write " + where + ": " + error.toStdString());
    m_contents = current;
}
