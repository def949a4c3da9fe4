#include "Socle/Chemin.hpp"

namespace tarnavelle::Chemin {

std::string_view dernierComposant(std::string_view chemin) {
  while (chemin.size() > 1 && chemin.ends_with('/')) chemin.remove_suffix(1);
  if (chemin == "/") return chemin;
  return chemin.substr(chemin.rfind('/') + 1);  // npos + 1 is 0: no slash, the whole of it
}

}  // namespace tarnavelle::Chemin
