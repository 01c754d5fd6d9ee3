#pragma once

#include <QByteArray>
#include <QString>

#include <functional>

class QIODevice;

namespace Core {

/// Writes `path` whole or not at all. `write` fills a temporary file beside
/// the target, which replaces it only when every write, the final flush of
/// the buffer and the close succeeded; otherwise the previous file stays as it
/// was, no temporary file is left and `error` (if given) says why. A target
/// that exists and is not a regular file (a device such as /dev/stdout) is
/// written in place, its failures reported the same way.
bool saveFile(const QString& path, const std::function<bool(QIODevice&)>& write, QString* error = nullptr);
bool saveFile(const QString& path, const QByteArray& bytes, QString* error = nullptr);

}  // namespace Core
