#pragma once

#include <QString>

#include <exception>

namespace Core {
namespace Exception {

/// The host's own error type; services throw it with a readable message.
class BaseException : public std::exception {
public:
    explicit BaseException(const QString& message);

    QString message() const;
    const char* what() const noexcept override;

private:
    QString m_message;
    QByteArray m_utf8;
};

}  // namespace Exception
}  // namespace Core
