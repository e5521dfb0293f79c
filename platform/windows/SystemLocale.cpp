#include "platform/system/SystemLocale.h"

#include <windows.h>

#include <array>
#include <cstddef>
#include <string>
#include <utility>

#include "platform/windows/WideText.h"
#include "platform/windows/WindowsPatterns.h"

namespace zeb {
namespace {

// "" when the locale has none.
std::string Ask(LCTYPE what) {
  std::wstring text(256, L'\0');
  const int length =
      GetLocaleInfoEx(LOCALE_NAME_USER_DEFAULT, what, text.data(), static_cast<int>(text.size()));
  return length <= 1 ? std::string()
                     : Narrow(std::wstring_view(text).substr(0, static_cast<std::size_t>(length - 1)));
}

void Install(std::string& into, std::string given) {
  if (!given.empty()) into = std::move(given);
}

// Windows numbers them one after the other.
template <std::size_t kCount>
void InstallNames(std::array<std::string, kCount>& names, LCTYPE first) {
  for (std::size_t i = 0; i < kCount; ++i) Install(names[i], Ask(first + static_cast<LCTYPE>(i)));
}

}  // namespace

SystemLocale ReadSystemLocale() {
  LocaleFormats formats;
  Install(formats.shortDate, PatternFromWindows(Ask(LOCALE_SSHORTDATE)));
  Install(formats.longDate, PatternFromWindows(Ask(LOCALE_SLONGDATE)));
  Install(formats.longTime, PatternFromWindows(Ask(LOCALE_STIMEFORMAT)));
  // Its week begins on Monday, ours on Sunday.
  std::array<std::string, 7> days, shortDays;
  InstallNames(days, LOCALE_SDAYNAME1);
  InstallNames(shortDays, LOCALE_SABBREVDAYNAME1);
  for (std::size_t i = 0; i < days.size(); ++i) {
    Install(formats.dayNames[(i + 1) % days.size()], days[i]);
    Install(formats.shortDayNames[(i + 1) % days.size()], shortDays[i]);
  }
  InstallNames(formats.monthNames, LOCALE_SMONTHNAME1);
  InstallNames(formats.shortMonthNames, LOCALE_SABBREVMONTHNAME1);
  Install(formats.am, Ask(LOCALE_S1159));
  Install(formats.pm, Ask(LOCALE_S2359));
  return {std::move(formats), ""};
}

// SystemErrorText asks for English at each call.
void UseEnglishSystemMessages() {}

}  // namespace zeb
