// What a spoken sentence asks of the cockpit: one intention, and the text model's verdict on a whole
// sentence. MoteurIntentions reads verdicts; carrying intentions out is the cockpit's business.
// Plain values: one thread at a time.
#pragma once

#include <string>
#include <variant>
#include <vector>

#include "Porte/CommandeControle.hpp"

namespace tarnavelle {

struct IntentionTarnavelle {
  // What a sentence can ask of the door is the door's own command.
  using dicter = CommandeControle::dicter;
  using focus = CommandeControle::focus;
  using allerScene = CommandeControle::allerScene;
  using ouvrirAgent = CommandeControle::ouvrirAgent;
  using ouvrirWeb = CommandeControle::ouvrirWeb;
  using resumer = CommandeControle::resumer;
  using etat = CommandeControle::etat;

  struct lire {
    std::string agent;          ///< empty: the one being looked at
    bool depuisPrompt = false;  ///< only since the last instruction
    bool operator==(const lire&) const = default;
  };
  struct repli {
    std::string texte;
    bool operator==(const repli&) const = default;
  };
  /// The operator's answer to an action that awaits it. Not read from a model.
  struct verdict {
    bool valeur = false;
    bool operator==(const verdict&) const = default;
  };
  /// Not read from a model either.
  struct inconnue {
    std::string texte;
    bool operator==(const inconnue&) const = default;
  };

  using Cas = std::variant<dicter, focus, allerScene, ouvrirAgent, ouvrirWeb, lire, resumer, repli, verdict,
                           inconnue, etat>;
  Cas cas;

  bool operator==(const IntentionTarnavelle&) const = default;
};

struct VerdictIntentions {
  bool adressee = false;                       ///< the sentence was spoken to the cockpit
  double confiance = 0;                        ///< 0 to 1
  std::string raison;                          ///< the model's, 120 characters at most
  std::vector<IntentionTarnavelle> commandes;  ///< in the order spoken

  bool operator==(const VerdictIntentions&) const = default;

  /// Nothing was asked.
  static VerdictIntentions silence() { return {}; }
};

}  // namespace tarnavelle
