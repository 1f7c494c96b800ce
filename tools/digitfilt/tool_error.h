#pragma once
// The one error type of the tool: its text is printed as a single line and the run ends with a
// non-zero status. Texts name the file, field or argument at fault.
#include <stdexcept>
#include <string>

namespace digitfilt::tool {

class ToolError : public std::runtime_error {
 public:
  explicit ToolError(const std::string& what) : std::runtime_error(what) {}
};

}  // namespace digitfilt::tool
