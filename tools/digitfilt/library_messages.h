#pragma once
// Collects the library's messages (what a host would show in a message box) while a command
// runs, and echoes each distinct one to stderr once.
#include <string>
#include <vector>

#include <digitfilt/digitfilt.h>

namespace digitfilt::tool {

class LibraryMessages {
 public:
  explicit LibraryMessages(bool echo);
  ~LibraryMessages();
  LibraryMessages(const LibraryMessages&) = delete;
  LibraryMessages& operator=(const LibraryMessages&) = delete;

  // Distinct texts in order of first appearance, trailing newlines removed.
  const std::vector<std::string>& texts() const { return texts_; }

 private:
  void add(const std::wstring& text);

  bool echo_;
  std::vector<std::string> texts_;
  MessageHandler previous_;
};

// UTF-8 of a wide string.
std::string toUtf8(const std::wstring& text);

}  // namespace digitfilt::tool
