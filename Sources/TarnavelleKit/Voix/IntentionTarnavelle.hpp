// What a spoken sentence asks of the cockpit: one intention, and the text model's verdict on a whole
// sentence. MoteurIntentions reads verdicts; carrying intentions out is the cockpit's business.
// Plain values.
#pragma once

#include <string>
#include <variant>
#include <vector>

namespace tarnavelle {

struct IntentionTarnavelle {
  struct dicter {
    std::string agent;  ///< here and below, empty: the one being looked at
    std::string texte;
    bool valider = true;
    bool operator==(const dicter&) const = default;
  };
  struct focus {
    std::string cible;
    bool operator==(const focus&) const = default;
  };
  struct allerScene {
    std::string nom;
    bool operator==(const allerScene&) const = default;
  };
  struct ouvrirAgent {
    std::string cli;      ///< empty: the first installed
    std::string dossier;  ///< empty: the current scene
    std::string hote;     ///< empty: this machine
    bool operator==(const ouvrirAgent&) const = default;
  };
  struct ouvrirWeb {
    std::string cible;
    bool externe = false;
    bool operator==(const ouvrirWeb&) const = default;
  };
  struct lire {
    std::string agent;
    bool depuisPrompt = false;
    bool operator==(const lire&) const = default;
  };
  struct resumer {
    std::string agent;
    bool operator==(const resumer&) const = default;
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
  struct etat {
    bool operator==(const etat&) const = default;
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
