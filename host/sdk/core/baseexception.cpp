#include "core/baseexception.h"

namespace Core {
namespace Exception {

BaseException::BaseException(const QString& message)
    : m_message(message), m_utf8(message.toUtf8())
{
}

QString BaseException::message() const { return m_message; }

const char* BaseException::what() const noexcept { return m_utf8.constData(); }

}  // namespace Exception
}  // namespace Core
