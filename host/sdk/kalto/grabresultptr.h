#pragma once

#include "kalto/grabresultdata.h"

#include <memory>

namespace Kalto {

/// Shared handle to one grab result; copies are cheap and may cross threads.
class CGrabResultPtr {
public:
    CGrabResultPtr();
    explicit CGrabResultPtr(std::shared_ptr<const CGrabResultData> data);

    bool IsValid() const { return static_cast<bool>(m_data); }
    explicit operator bool() const { return IsValid(); }
    /// Throws GenICam_3_1_Ostrel_kalto::RuntimeException on an invalid handle.
    const CGrabResultData* operator->() const;
    const CGrabResultData& operator*() const { return *operator->(); }
    void Release() { m_data.reset(); }

private:
    std::shared_ptr<const CGrabResultData> m_data;
};

}  // namespace Kalto
