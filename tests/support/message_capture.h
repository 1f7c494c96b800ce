#pragma once
// Captures every message shown through the library's hook while in scope.
#include <string>
#include <vector>

#include <digitfilt/digitfilt.h>

namespace digitfilt::test {

class MessageCapture {
 public:
  MessageCapture()
      : previous_(setMessageHandler([this](const std::wstring& text) {
          messages.push_back(text);
          return 1;
        })) {}
  ~MessageCapture() { setMessageHandler(previous_); }
  MessageCapture(const MessageCapture&) = delete;
  MessageCapture& operator=(const MessageCapture&) = delete;

  std::vector<std::wstring> messages;

 private:
  MessageHandler previous_;
};

}  // namespace digitfilt::test
