#include "digitfilt/foundation/messages.h"

#include <cstdarg>
#include <cstdio>
#include <cwchar>
#include <iostream>
#include <mutex>
#include <utility>
#include <vector>

namespace digitfilt {
namespace {

std::mutex& handlerMutex() {
  static std::mutex m;
  return m;
}

MessageHandler& currentHandler() {
  static MessageHandler handler;
  return handler;
}

int writeToStderr(const std::wstring& text) {
  // Narrow output: the texts are ASCII, and mixing wide and narrow streams on stderr is unsafe.
  std::string narrow;
  narrow.reserve(text.size());
  for (wchar_t c : text) narrow.push_back(c < 128 ? static_cast<char>(c) : '?');
  std::fputs(narrow.c_str(), stderr);
  if (narrow.empty() || narrow.back() != '\n') std::fputc('\n', stderr);
  std::fflush(stderr);
  return 1;  // IDOK
}

std::wstring vformatWide(const wchar_t* format, va_list args) {
  std::vector<wchar_t> buf(256);
  for (;;) {
    va_list copy;
    va_copy(copy, args);
    const int n = std::vswprintf(buf.data(), buf.size(), format, copy);
    va_end(copy);
    if (n >= 0 && static_cast<std::size_t>(n) < buf.size()) return std::wstring(buf.data(), n);
    // vswprintf reports truncation only as -1; grow until it fits, within reason.
    // Past the cap (or on an encoding error, which also gives -1) keep what was written; the
    // terminator is not guaranteed after a failed call, so set it.
    if (buf.size() >= (1u << 20)) {
      buf.back() = L'\0';
      return std::wstring(buf.data());
    }
    buf.resize(buf.size() * 4);
  }
}

}  // namespace

MessageHandler setMessageHandler(MessageHandler handler) {
  std::lock_guard<std::mutex> lock(handlerMutex());
  return std::exchange(currentHandler(), std::move(handler));
}

int showMessage(const std::wstring& text) {
  MessageHandler handler;
  {
    std::lock_guard<std::mutex> lock(handlerMutex());
    handler = currentHandler();
  }
  return handler ? handler(text) : writeToStderr(text);
}

std::wstring formatMessage(const wchar_t* format, ...) {
  va_list args;
  va_start(args, format);
  std::wstring text = vformatWide(format, args);
  va_end(args);
  return text;
}

std::string formatText(const char* format, ...) {
  va_list args;
  va_start(args, format);
  va_list copy;
  va_copy(copy, args);
  const int n = std::vsnprintf(nullptr, 0, format, copy);
  va_end(copy);
  std::string text;
  if (n > 0) {
    text.resize(static_cast<std::size_t>(n) + 1);
    std::vsnprintf(text.data(), text.size(), format, args);
    text.resize(static_cast<std::size_t>(n));
  }
  va_end(args);
  return text;
}

int showMessageF(const wchar_t* format, ...) {
  va_list args;
  va_start(args, format);
  std::wstring text = vformatWide(format, args);
  va_end(args);
  return showMessage(text);
}

}  // namespace digitfilt
