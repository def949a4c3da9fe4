// What the operator is told of a conversation: on a terminal, the transcript above one line that lives; on a
// pipe, plain lines, what is said and what is told about it apart; for a
// program, a JSON object a line. Whatever comes from elsewhere is made harmless. One thread at a time.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "Socle/JSON.hpp"
#include "Terminal/Toile.hpp"
#include "Voix/ConversationVoix.hpp"

namespace tarnavelle::Voix {

class Recit {
 public:
  enum class Forme { terminal, lignes, json };

  /// A terminal is that of the standard streams.
  struct Descripteurs {
    int dits;      ///< for what is said
    int messages;  ///< for what is told about it
  };
  Recit(Forme forme, Descripteurs descripteurs);
  ~Recit();

  Forme forme() const { return forme_; }

  void operateur(const std::string& texte);
  void modele(const std::string& texte);
  void outil(const std::string& nom, const std::string& arguments);
  void outilRendu(const std::string& nom, const std::string& sortie, double secondes);
  void message(const ConversationVoix::Message& message);
  void etat(ConversationVoix::Etat etat);
  void cout(const ConversationVoix::Cout& cout);
  void fin(const ConversationVoix::Cout& cout, const std::string& jour);

  /// What the line that lives shows beside the state and the cost.
  struct Vif {
    float micro = 0;   ///< level, 0 to 1
    float parole = 0;  ///< of the voice
    std::string_view aide{};
  };
  void vivre(const Vif& vif);
  /// Has the terminal do something, until it is given back.
  void commander(std::string_view debut, std::string_view fin);
  /// The terminal may have another size.
  void remesurer();
  /// Gives the terminal back.
  void fermer();

  /// Whether nobody reads any more.
  bool perdu() const { return perdu_; }

 private:
  /// `aCote`: a message, where there is no terminal to draw on.
  void ligne(std::string_view debut, const std::string& texte, bool aCote = false);
  void objet(const Json& objet);
  void ecrire(const std::string& octets);

  const Forme forme_;
  const Descripteurs descripteurs_;
  std::unique_ptr<Toile> toile_;
  ConversationVoix::Etat etat_ = ConversationVoix::Etat::raccroche;
  std::string cout_;
  std::string adieu_;  ///< for the terminal
  bool perdu_ = false;
};

/// "ecoute", as events name it; and as a person reads it.
std::string_view nom(ConversationVoix::Etat etat);
std::string_view enMots(ConversationVoix::Etat etat);

}  // namespace tarnavelle::Voix
