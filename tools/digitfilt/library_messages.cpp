#include "library_messages.h"

#include <algorithm>
#include <iostream>

namespace digitfilt::tool {

std::string toUtf8(const std::wstring& text) {
  std::string out;
  for (wchar_t wc : text) {
    const auto c = static_cast<std::uint32_t>(wc);
    if (c < 0x80) {
      out += static_cast<char>(c);
    } else if (c < 0x800) {
      out += static_cast<char>(0xC0 | (c >> 6));
      out += static_cast<char>(0x80 | (c & 0x3F));
    } else if (c < 0x10000) {
      out += static_cast<char>(0xE0 | (c >> 12));
      out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
      out += static_cast<char>(0x80 | (c & 0x3F));
    } else {
      out += static_cast<char>(0xF0 | (c >> 18));
      out += static_cast<char>(0x80 | ((c >> 12) & 0x3F));
      out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
      out += static_cast<char>(0x80 | (c & 0x3F));
    }
  }
  return out;
}

LibraryMessages::LibraryMessages(bool echo)
    : echo_(echo), previous_(setMessageHandler([this](const std::wstring& t) {
        add(t);
        return 1;  // IDOK, as a dismissed message box answers
      })) {}

LibraryMessages::~LibraryMessages() { setMessageHandler(previous_); }

void LibraryMessages::add(const std::wstring& text) {
  std::string s = toUtf8(text);
  while (!s.empty() && (s.back() == '\n' || s.back() == '\r')) s.pop_back();
  for (char& c : s)
    if (c == '\n') c = ' ';
  if (std::find(texts_.begin(), texts_.end(), s) != texts_.end()) return;
  texts_.push_back(s);
  if (echo_) std::cerr << "digitfilt: library message: " << s << "\n";
}

}  // namespace digitfilt::tool
