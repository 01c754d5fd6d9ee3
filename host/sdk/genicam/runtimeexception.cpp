#include "genicam/runtimeexception.h"

#include <utility>

namespace GenICam_3_1_Ostrel_kalto {

RuntimeException::RuntimeException(std::string description, const char* sourceFile,
                                   unsigned int sourceLine)
    : m_description(std::move(description)),
      m_sourceFile(sourceFile ? sourceFile : ""),
      m_sourceLine(sourceLine)
{
}

const char* RuntimeException::what() const noexcept { return m_description.c_str(); }
const char* RuntimeException::GetDescription() const noexcept { return m_description.c_str(); }
const char* RuntimeException::GetSourceFileName() const noexcept { return m_sourceFile.c_str(); }
unsigned int RuntimeException::GetSourceLine() const noexcept { return m_sourceLine; }

}  // namespace GenICam_3_1_Ostrel_kalto
