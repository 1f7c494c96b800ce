#pragma once
// User-visible messages. Every text a user must read passes one hook so that hosts can route it
// to their own dialog and tests can capture it.
#include <functional>
#include <string>

namespace digitfilt {

using MessageHandler = std::function<int(const std::wstring&)>;

// Installs `handler` and returns the previous one; an empty handler restores the default, which
// writes the text to stderr.
MessageHandler setMessageHandler(MessageHandler handler);

// Shows `text` through the current handler and returns what the handler returns.
int showMessage(const std::wstring& text);

// printf-style formatting into a wide string ("%d", "%f", "%ls" ...), as message texts need.
std::wstring formatMessage(const wchar_t* format, ...);

// printf-style formatting into a narrow string.
std::string formatText(const char* format, ...);

// Shows a formatted message: showMessage(formatMessage(format, ...)).
int showMessageF(const wchar_t* format, ...);

}  // namespace digitfilt
