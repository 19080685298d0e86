// Puts the process into a locale that writes a decimal comma, where one is installed, until the end of a scope.
#pragma once

#include <clocale>
#include <string>
#include <string_view>

namespace qs {

class CommaLocale {
 public:
  CommaLocale() {
    for (const char* name : {"de_DE.UTF-8", "de_DE.utf8", "German_Germany", "de-DE"}) {
      if (std::setlocale(LC_ALL, name)) break;
    }
  }
  CommaLocale(const CommaLocale&) = delete;
  CommaLocale& operator=(const CommaLocale&) = delete;
  ~CommaLocale() { std::setlocale(LC_ALL, before_.c_str()); }

  bool installed() const { return std::string_view(std::localeconv()->decimal_point) == ","; }

 private:
  std::string before_ = std::setlocale(LC_ALL, nullptr);
};

}  // namespace qs
