#include "diagnostics/hxGeneral.h"

#include <exception>
#include <system_error>

#include "text/Encodings.h"
#include "text/HexDigits.h"
#include "text/LetterCase.h"
#include "text/Utf8.h"

namespace zeb {
namespace {

constexpr char kProblemStart[] = "There was a problem ";

std::string ProblemText(std::string_view what, std::string_view description) {
  what = TrimBlanks(what);
  description = TrimBlanks(description);
  std::string text(kProblemStart);
  text += what;
  if (!description.empty()) {
    text += " and the error's description was reported as : \n\n\"";
    text += description;
    text += '"';
  }
  return text;
}

std::string LettersAndDigits(std::string_view text) {
  std::string kept;
  for (const char c : text)
    if ((c >= '0' && c <= '9') || (AsciiLower(c) >= 'a' && AsciiLower(c) <= 'z')) kept += c;
  return kept;
}

}  // namespace

void WriteDebugLine(std::string_view message, std::int32_t level, LineKind kind) {
  if (DebugLevelAllows(level == -1 ? 5 : level)) detail::WriteInstalled(message, kind);
}

void Trace::Write(std::string_view start, LineKind kind) const {
  std::string message(start);
  message += what_;
  detail::WriteInstalled(message, kind);
}

void ShowProblem(std::string_view what, std::string_view description, Report report) {
  if (report == Report::kQuietly && !DebugLevelAllows(5)) return;
  const std::string text = ProblemText(what, description);
  if (report == Report::kShown) detail::ShowInstalled(text);
  WriteDebugLine(text);
}

void ReportError(std::string_view what, std::string_view description, int number, Report report) {
  if (description.empty() && number == 0) return ShowProblem(what, "", report);
  std::string withNumber(description);
  withNumber += " (";
  AppendPlainNumber(withNumber, static_cast<std::int64_t>(number));
  withNumber += ')';
  ShowProblem(what, withNumber, report);
}

void ReportException(std::string_view what, Report report) {
  if (!std::current_exception()) return ShowProblem(what, "", report);
  try {
    throw;
  } catch (const std::system_error& error) {
    ReportError(what, error.what(), error.code().value(), report);
  } catch (const std::exception& error) {
    ShowProblem(what, error.what(), report);  // it has no number
  } catch (...) {
    ShowProblem(what, "unknown error", report);
  }
}

std::string ConvertHexEscapes(std::string_view text) {
  std::string result;
  result.reserve(text.size());
  std::size_t at = 0;
  bool produced = false;  // a "{" that an escape gave stands before `at`
  while (true) {
    if (!produced) {
      const std::size_t brace = text.find('{', at);
      if (brace == std::string_view::npos) break;
      result.append(text, at, brace - at);
      at = brace + 1;
    }
    produced = false;
    // The three characters behind the "{"; whatever they are, they go.
    const std::size_t second = SkipCharacters(text, at, 1);
    const std::size_t third = SkipCharacters(text, second, 1);
    const std::size_t end = SkipCharacters(text, third, 1);
    if (end > third && text[third] == '}' && CapitalHexDigit(text[at]) >= 0) {
      int code = CapitalHexDigit(text[at]);
      if (const int low = HexDigit(text[second]); low >= 0) code = code * 16 + low;
      if (code == '{') {
        produced = true;
      } else {
        const char byte = static_cast<char>(static_cast<unsigned char>(code));
        result += DecodeLenient({&byte, 1});  // above 7F: a character of Windows-1252
      }
    }
    at = end;
  }
  result.append(text, at);
  return result;
}

Result<std::string> GetTempFile(FileSystem& files, std::string_view prefix, std::vector<std::string>* trace) {
  const auto step = [trace](std::string line) {
    if (trace) trace->push_back(std::move(line));
  };
  step("Start GetTempFile");
  std::string name = LettersAndDigits(prefix);
  if (name.empty()) name = "ZEB";
  step("Get the user's temp path");
  step("Call GetTempFilename");
  Result<std::string> file = files.MakeTempFile(name);
  step("Process the return");
  if (!file) step(ProblemText("Error getting a temporary file name : " + file.Reason(), ""));
  step("End GetTempFile");
  return file;
}

void WriteDebugLines(const std::vector<std::string>& lines) {
  for (const std::string& line : lines) WriteDebugLine(line);
}

}  // namespace zeb
