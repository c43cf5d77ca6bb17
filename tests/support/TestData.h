// Access to the files under tests/data.
#ifndef KOVA_TESTS_SUPPORT_TESTDATA_H_
#define KOVA_TESTS_SUPPORT_TESTDATA_H_

#include <string>

namespace kova::test {

// Full path of a file under tests/data.
std::string DataPath(const std::string& relative);
// The bytes of a file under tests/data; throws std::runtime_error when it cannot be read.
std::string ReadDataFile(const std::string& relative);

}  // namespace kova::test

#endif  // KOVA_TESTS_SUPPORT_TESTDATA_H_
