// How the gateway is reached. A turn asks for the way before it speaks, and may have to wait for it; one thread
// at a time, but for `interrompre`.
#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "Hermes/ReglagesHermes.hpp"
#include "Socle/Resultat.hpp"

namespace tarnavelle {

class Voie {
 public:
  /// What the operator is told meanwhile: sentences.
  using Dire = std::function<void(const std::string&)>;

  struct Ouverte {
    std::string base;
    std::string cle;  ///< empty: none
    std::string modele;
  };

  virtual ~Voie() = default;

  /// Leads there now; opened again when it was lost. Or why not, in French: sentences.
  virtual Resultat<Ouverte, std::string> ouvrir(const Dire& dire) = 0;

  /// Gives a message to the agent's command-line program over there; what it says, or why it did not go well: a
  /// sentence.
  virtual Resultat<std::string, std::string> rejouer(const std::string& message) = 0;

  /// Whether `rejouer` can be tried.
  virtual bool rejoue() const { return false; }

  /// Ends at once what is under way, from any thread; `ouvrir` begins anew.
  virtual void interrompre() = 0;
};

/// By which ssh a host is reached.
struct AccesSSH {
  std::string hote{};                     ///< empty: as it is set
  std::filesystem::path configuration{};  ///< instead of the user's own; empty for that
  std::filesystem::path prises{};         ///< where the shared connections are
};

/// The way that the settings tell: straight to an address, or to a host by ssh.
std::unique_ptr<Voie> voieReglee(const ReglagesHermes& reglages, const AccesSSH& acces);

/// By ssh: wakes the gateway over there when it sleeps, and leads to it by a tunnel that ends with this object,
/// or with its process.
std::unique_ptr<Voie> voieSSH(const ReglagesHermes::Passerelle& passerelle, const AccesSSH& acces);

}  // namespace tarnavelle
