// Status codes of the library as the tool reports them, and the tool's own error.
#ifndef KOVA_TOOLS_KOVA_MAPPING_STATUS_H_
#define KOVA_TOOLS_KOVA_MAPPING_STATUS_H_

#include <KOVAMappingServices/ZANStatus.h>

#include <exception>
#include <stdexcept>
#include <string>

namespace kova::tool {

// A failure the tool reports as one line on standard error ("kova-mapping: " + what()), with the
// library's status when a library call failed (E_FAIL otherwise), and the system's error number
// when a file could not be read or written (0 otherwise).
class ToolError : public std::runtime_error {
 public:
  explicit ToolError(const std::string& what, HRESULT status = E_FAIL, int osError = 0)
      : std::runtime_error(what), status_(status), osError_(osError) {}
  HRESULT status() const { return status_; }
  int osError() const { return osError_; }

 private:
  HRESULT status_;
  int osError_;
};

// "0x80004005": the status as eight upper-case hexadecimal digits.
std::string FormatStatus(HRESULT status);

// What a status means, in a few words ("invalid data (malformed JSON or base64)"); a status the
// tool does not know gives "unknown status".
std::string StatusMeaning(HRESULT status);

// What an exception raised by a library call means, in a few words: the envelope's size field out
// of range or unreadable, a null platform handle, memory exhausted, or the exception's own text.
std::string DescribeLibraryException(const std::exception& error);

}  // namespace kova::tool

#endif  // KOVA_TOOLS_KOVA_MAPPING_STATUS_H_
