#include "kalto/grabresultptr.h"

#include "genicam/runtimeexception.h"

namespace Kalto {

CGrabResultPtr::CGrabResultPtr() = default;

CGrabResultPtr::CGrabResultPtr(std::shared_ptr<const CGrabResultData> data)
    : m_data(std::move(data))
{
}

const CGrabResultData* CGrabResultPtr::operator->() const
{
    if (!m_data)
        KALTO_THROW_RUNTIME("Grab result handle is empty");
    return m_data.get();
}

}  // namespace Kalto
