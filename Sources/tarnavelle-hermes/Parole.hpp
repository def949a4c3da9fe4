// What is said to the operator in a shell: text as it streams, whole words at a time and harmless, or JSON
// lines for another program. One thread at a time.
#pragma once

#include <string>
#include <string_view>

#include "Hermes/EvenementGateway.hpp"
#include "Socle/JSON.hpp"

namespace tarnavelle {

class Parole {
 public:
  explicit Parole(bool json) : json_(json) {}

  /// A piece of Hermès's reply, on standard output.
  void texte(std::string_view morceau);
  /// A whole line on standard output, when it is for a person.
  void ligne(std::string_view texte);
  /// A sentence beside it, on standard error; as JSON, a line of that kind.
  void note(std::string_view phrase, std::string_view genre = "note");
  /// An event, as JSON alone.
  void objet(const Json& objet);
  void evenement(const EvenementGateway& evenement);
  /// What is held back goes out; the reply's last line is ended.
  void finir();

  bool json() const { return json_; }
  /// Whether nobody reads any more.
  bool perdue() const { return perdue_; }

 private:
  void ecrire(int descripteur, std::string_view octets);

  const bool json_;
  std::string retenu_;  ///< the beginning of a word
  bool enLigne_ = false;
  bool perdue_ = false;
};

/// A request for approval in words, a line for each thing that is known of it.
std::string enClair(const DemandeApprobationHermes& demande);

}  // namespace tarnavelle
