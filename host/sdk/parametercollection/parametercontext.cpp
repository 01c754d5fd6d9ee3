#include "parametercollection/parametercontext.h"

#include "core/baseexception.h"

namespace ParameterCollection {

void ParameterContext::requireConnected() const
{
    if (!isConnected())
        throw Core::Exception::BaseException(
            QStringLiteral("Camera %1 is disconnected").arg(cameraName));
}

}  // namespace ParameterCollection
