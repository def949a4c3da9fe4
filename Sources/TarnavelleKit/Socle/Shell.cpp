#include "Socle/Shell.hpp"

namespace tarnavelle::Shell {

std::string mot(std::string_view texte) {
  std::string cite = "'";
  for (const char c : texte) {
    if (c == '\'')
      cite += R"('\'')";
    else
      cite += c;
  }
  return cite += '\'';
}

}  // namespace tarnavelle::Shell
