// Why the registry did not do it.
#pragma once

#include <string>

#include "Socle/Resultat.hpp"

namespace tarnavelle::Plateau {

struct Avarie {
  enum class Cas {
    occupe,        ///< another process has the file
    plein,         ///< no room on the disk, or the file is as large as it may be
    illisible,     ///< the file is damaged
    inaccessible,  ///< it can't be opened, read or written here
    borne,         ///< as many records as there may be, or one too long
    pris,          ///< the name already designates something else
    absent,        ///< no such record
  };
  Cas cas = Cas::inaccessible;
  std::string phrase;  ///< in French, for the operator: a whole sentence
  bool operator==(const Avarie&) const = default;
};

template <class T>
using Garde = Resultat<T, Avarie>;

}  // namespace tarnavelle::Plateau
