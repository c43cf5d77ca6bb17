// Inputs and outputs of the tool: whole files or standard input in, standard output or a file out.
#ifndef KOVA_TOOLS_KOVA_MAPPING_IO_H_
#define KOVA_TOOLS_KOVA_MAPPING_IO_H_

#include <string>
#include <string_view>

namespace kova::tool {

// "kova-mapping: MESSAGE" on standard error, kept on one line.
void PrintError(std::string_view message);

// The whole content of the file at path, or of standard input when path is "-". The text must be
// UTF-8 (a leading byte order mark is kept: the library skips it). Throws ToolError naming the
// input: "FILE: not found", "FILE: permission denied", "FILE: is a directory",
// "FILE: cannot read (reason)", "FILE: not UTF-8 (invalid byte at offset N)", and for a second
// "-", "-: standard input can be read only once".
std::string ReadInput(const std::string& path);

// Where a command's output goes: standard output when the path is empty or "-", otherwise the
// file at path. A file is written in full under a temporary name beside it and renamed over the
// path by Commit, so a failing command leaves an existing file as it was; a path that is not a
// regular file (a device such as /dev/null, a pipe) is written directly. Write failures throw
// ToolError naming the output.
class Output {
 public:
  explicit Output(const std::string& path);
  ~Output();
  Output(const Output&) = delete;
  Output& operator=(const Output&) = delete;

  void Write(std::string_view text);
  // Hands what is buffered to standard output (nothing for a file until Commit), so that it comes
  // before whatever the library prints next.
  void Flush();
  // Writes the rest and puts the file in place. Without Commit, a temporary file is removed.
  void Commit();

 private:
  void Drain();

  std::string name_;       // the output as the user named it, for messages
  std::string target_;     // the file renamed over at Commit (empty: no rename)
  std::string temporary_;  // the temporary file being written (empty: none)
  int fd_ = 1;
  bool ownsFd_ = false;
  bool committed_ = false;
  std::string buffer_;
};

}  // namespace kova::tool

#endif  // KOVA_TOOLS_KOVA_MAPPING_IO_H_
