#include "savefile.h"

#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

namespace Core {

namespace {

bool fail(QString* error, const QString& reason)
{
    if (error)
        *error = reason;
    return false;
}

bool writeInPlace(const QString& path, const std::function<bool(QIODevice&)>& write, QString* error)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Unbuffered))
        return fail(error, file.errorString());
    const bool written = write(file) && file.error() == QFileDevice::NoError;
    const QString reason = file.errorString();
    file.close();
    if (!written || file.error() != QFileDevice::NoError)
        return fail(error, file.error() != QFileDevice::NoError ? file.errorString() : reason);
    return true;
}

}  // namespace

bool saveFile(const QString& path, const std::function<bool(QIODevice&)>& write, QString* error)
{
    const QFileInfo target(path);
    if (target.exists() && !target.isFile() && !target.isDir())
        return writeInPlace(path, write, error);
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return fail(error, file.errorString());
    // commit() misses a failure of the buffer's final flush (the disk filling
    // up after the last write call) and would put a cut file in place: the
    // flush is made and checked here first.
    if (!write(file) || !file.flush() || file.error() != QFileDevice::NoError) {
        const QString reason = file.error() != QFileDevice::NoError ? file.errorString()
                                                                    : QStringLiteral("the data could not be produced");
        file.cancelWriting();
        return fail(error, reason);
    }
    if (!file.commit())
        return fail(error, file.errorString());
    return true;
}

bool saveFile(const QString& path, const QByteArray& bytes, QString* error)
{
    return saveFile(path, [&bytes](QIODevice& device) { return device.write(bytes) == bytes.size(); }, error);
}

}  // namespace Core
