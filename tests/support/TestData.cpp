#include "tests/support/TestData.h"

#include <fstream>
#include <sstream>
#include <stdexcept>

namespace kova::test {

std::string DataPath(const std::string& relative) { return std::string(KOVA_TEST_DATA_DIR) + "/" + relative; }

std::string ReadDataFile(const std::string& relative) {
  std::ifstream in(DataPath(relative), std::ios::binary);
  if (!in) throw std::runtime_error("cannot read test data file " + relative);
  std::ostringstream buffer;
  buffer << in.rdbuf();
  return buffer.str();
}

}  // namespace kova::test
