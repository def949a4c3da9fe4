#include "Agents/LigneTmux.hpp"

#include "Socle/Shell.hpp"

namespace tarnavelle::LigneTmux {

std::string mot(std::string_view texte) {
  std::string argument(texte);
  if (argument.ends_with(';')) argument.insert(argument.size() - 1, 1, '\\');
  return Shell::mot(argument);
}

std::string motDeFormat(std::string_view texte) {
  std::string format;
  for (const char c : texte) {
    if (c == '#') format += '#';
    format += c;
  }
  return mot(format);
}

}  // namespace tarnavelle::LigneTmux
