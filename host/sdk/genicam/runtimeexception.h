#pragma once

#include <exception>
#include <string>

namespace GenICam_3_1_Ostrel_kalto {

/// The error every node-map, device and converter call throws: a description
/// plus the source location that raised it.
class RuntimeException : public std::exception {
public:
    RuntimeException(std::string description, const char* sourceFile, unsigned int sourceLine);

    const char* what() const noexcept override;
    const char* GetDescription() const noexcept;
    const char* GetSourceFileName() const noexcept;
    unsigned int GetSourceLine() const noexcept;

private:
    std::string m_description;
    std::string m_sourceFile;
    unsigned int m_sourceLine;
};

}  // namespace GenICam_3_1_Ostrel_kalto

/// Throws a RuntimeException carrying the current file and line.
#define KALTO_THROW_RUNTIME(description)                                                    \
    throw ::GenICam_3_1_Ostrel_kalto::RuntimeException((description), __FILE__, __LINE__)
