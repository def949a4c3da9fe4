// A whole board without programs: what the trial door opens and the tests drive. Forgets all with the object.
#pragma once

#include <memory>

#include "TerminauxSimules/TerminauxSimules.hpp"
#include "Verbes/Executeur.hpp"

namespace tarnavelle::Plateau {

class PlateauSimule {
 public:
  /// Two scenes, Sources and Atelier; Merlin and the Forge on the first, Milan on the second. The clock must
  /// outlive it. Nothing when memory cannot be had for it.
  static std::unique_ptr<PlateauSimule> depart(Horloge& horloge);

  Executeur& executeur() { return executeur_; }
  Registre& registre() { return registre_; }
  TerminauxSimules& terminaux() { return terminaux_; }

 private:
  PlateauSimule(Horloge& horloge, Registre registre);

  Registre registre_;
  TerminauxSimules terminaux_;
  VeilleSimulee veille_;
  LanceursSimules lanceurs_;
  Executeur executeur_;
};

}  // namespace tarnavelle::Plateau
