#include "LigneCommande.hpp"

#include <algorithm>
#include <iterator>
#include <nlohmann/json.hpp>
#include <optional>
#include <utility>

#include "Porte/CommandeControle.hpp"
#include "Proche.hpp"
#include "Socle/Texte.hpp"

namespace tarnavelle {
namespace {

using Genre = ParamVoix::Genre;

bool estOption(std::string_view mot) { return mot.starts_with("--"); }

/// The boolean that a text reads as for the door; nothing when it reads as none.
std::optional<bool> commeBooleen(const std::string& texte) {
  const Json lu = {{"b", texte}};
  const bool valeur = Champ::booleen(lu, "b", false);
  return valeur == Champ::booleen(lu, "b", true) ? std::optional(valeur) : std::nullopt;
}

class Decoupage {
 public:
  explicit Decoupage(const std::vector<std::string>& mots) : mots_(mots) {}

  Resultat<LigneCommande, FauteLigne> faire() {
    bool options = true;
    for (; i_ < mots_.size(); ++i_) {
      const std::string& mot = mots_[i_];
      if (!Texte::utf8Valide(mot)) refuser("Ce mot n'est pas de l'UTF-8 valide : " + citer(mot) + ".");
      if (options && mot == "--")
        options = false;
      else if (options && mot == "-h")
        ligne_.aide = true;
      else if (options && estOption(mot))
        option(mot.substr(2));
      else if (options && mot.starts_with('-') && (ligne_.mot.empty() || nommeUneOption(mot.substr(1))))
        refuser(inconnue(mot));
      else if (ligne_.mot.empty())
        nommer(mot);
      else
        donnes_.positionnels.push_back(mot);
    }
    // Whoever asks for help does not want to be told off.
    if (ligne_.aide || ligne_.version) return std::move(ligne_);
    if (!faute_) achever();
    if (faute_) return Sinon{std::move(*faute_)};
    return std::move(ligne_);
  }

 private:
  void refuser(std::string message) {
    if (!faute_) faute_ = FauteLigne{std::move(message), ligne_.commande.outil};
  }

  void nommer(const std::string& mot) {
    if (Texte::rogner(mot).empty()) return refuser("Le verbe est vide.");
    ligne_.mot = mot;
    ligne_.commande = commande(mot);
    // A common option given before it may be one of its own parameters.
    if (const OutilVoix* outil = ligne_.commande.outil)
      for (const auto& [commun, champ] : optionsCommunes())
        if (ligne_.*champ && std::ranges::count(outil->parametres, commun.nom, &ParamVoix::nom) > 0)
          donnes_.drapeaux.insert(commun.nom);
  }

  /// Whether the option of that name, and perhaps a value, would be one with two dashes.
  bool nommeUneOption(std::string_view texte) const {
    return std::ranges::any_of(
        options(), [nom = texte.substr(0, texte.find('='))](const ParamVoix& p) { return p.estNomme(nom); });
  }

  /// The options that may stand here.
  std::vector<ParamVoix> options() const {
    const OutilVoix* outil = ligne_.commande.outil;
    auto options = outil ? outil->parametres : std::vector<ParamVoix>{};
    std::ranges::move(parametresCommuns(outil), std::back_inserter(options));
    return options;
  }

  void option(const std::string& texte) {
    const auto egal = texte.find('=');
    const std::string nom = texte.substr(0, egal);
    std::optional<std::string> valeur;
    if (egal != texte.npos) valeur = texte.substr(egal + 1);

    const OutilVoix* outil = ligne_.commande.outil;
    if (outil)
      for (const ParamVoix& p : outil->parametres)
        if (p.estNomme(nom)) return p.genre == Genre::booleen ? booleen(p, valeur) : valeurDe(p, valeur);
    for (const OptionCommune& commune : optionsCommunes())
      if (commune.parametre.estNomme(nom)) {
        if (valeur) return refuser(commeOption(commune.parametre) + " ne prend pas de valeur.");
        ligne_.*commune.champ = true;
        return;
      }
    if (!ligne_.mot.empty() && !outil)  // the door will answer for the verb
      ligne_.laisses.push_back("--" + texte);
    else
      refuser(inconnue("--" + nom));
  }

  std::string inconnue(const std::string& option) const {
    std::vector<std::string> noms;
    for (const ParamVoix& p : options()) noms.push_back(commeOption(p));
    std::string message = ligne_.mot.empty() ? "Option inconnue avant le verbe : " : "Option inconnue : ";
    message += citer(option) + ".";
    const std::string nom = option.substr(std::min(option.find_first_not_of('-'), option.size()));
    if (const auto proche = nom.empty() ? std::nullopt : nomProche("--" + nom, noms))
      message += " Vouliez-vous dire " + *proche + " ?";
    return message;
  }

  void booleen(const ParamVoix& param, const std::optional<std::string>& valeur) {
    const std::string option = commeOption(param);
    if (valeur) {
      const auto lue = commeBooleen(*valeur);
      if (!lue) return refuser(option + " vaut true ou false, pas " + citer(*valeur) + ".");
      if (!*lue) {
        donnes_.drapeaux.erase(param.nom);
        donnes_.options[param.nom] = "false";
        return;
      }
    } else if (i_ + 1 < mots_.size() && commeBooleen(mots_[i_ + 1])) {
      const std::string& suivant = mots_[i_ + 1];
      return refuser(option + " ne prend pas de mot pour valeur. Écrivez " + option + "=" + suivant +
                     ", ou placez le mot « " + suivant + " » avant l'option.");
    }
    donnes_.options.erase(param.nom);
    donnes_.drapeaux.insert(param.nom);
  }

  void valeurDe(const ParamVoix& param, std::optional<std::string> valeur) {
    if (!valeur) {
      if (i_ + 1 == mots_.size() || estOption(mots_[i_ + 1])) {
        std::string message = "Il manque la valeur de " + commeOption(param) + ".";
        if (i_ + 1 < mots_.size())
          message += " Si elle commence par deux tirets, écrivez " + commeOption(param) + "=…";
        return refuser(std::move(message));
      }
      valeur = mots_[++i_];
      if (!Texte::utf8Valide(*valeur))
        return refuser("La valeur de " + commeOption(param) + " n'est pas de l'UTF-8 valide.");
    }
    donnes_.options[param.nom] = std::move(*valeur);
  }

  void achever() {
    if (ligne_.mot.empty()) return refuser("Il manque le verbe.");
    const OutilVoix* outil = ligne_.commande.outil;
    ligne_.charge = charge();
    std::size_t places = 0;  // words that fill a parameter
    if (outil)
      for (const ParamVoix& p : outil->parametres) {
        const bool donne = ligne_.charge.contains(p.nom);
        if (p.requis && !donne)
          return refuser("Il manque « " + p.nom + " ». " + p.description +
                         (p.description.ends_with('.') ? "" : "."));
        places += donne && p.genre == Genre::texte && !donnes_.options.contains(p.nom);
      }
    const auto& mots = donnes_.positionnels;
    ligne_.laisses.insert(ligne_.laisses.begin(), mots.begin() + static_cast<std::ptrdiff_t>(places),
                          mots.end());
    for (const auto& [nom, valeur] : donnes_.options)  // what goes with a flag that was not given
      if (outil && !ligne_.charge.contains(nom) && !(valeur == "false" && precision(*outil, nom)))
        ligne_.laisses.push_back("--" + nom);
  }

  Json charge() const {
    const auto [outil, locale] = ligne_.commande;
    const OutilVoix* service = locale && locale->service ? outil : nullptr;
    if (outil && !locale)
      for (const std::string& drapeau : donnes_.drapeaux)
        if (const OutilVoix* voulu = precision(*outil, drapeau)) service = voulu;
    if (!locale && !service) return CommandeControle::chargeGenerique(ligne_.mot, donnes_);
    Json charge = (service ? service : outil)->arguments(donnes_);
    if (service) charge.erase(service->nom);  // the flag has said it
    if (service) charge["action"] = service->nom;
    return charge;
  }

  const std::vector<std::string>& mots_;
  std::size_t i_ = 0;
  LigneCommande ligne_;
  MotsCLI donnes_;  ///< under the parameters' own names; a boolean's only value is "false"
  std::optional<FauteLigne> faute_;
};

}  // namespace

const std::vector<OptionCommune>& optionsCommunes() {
  const auto option = [](const char* nom, const char* description, bool LigneCommande::*champ) {
    return OptionCommune{{nom, Genre::booleen, description, false}, champ};
  };
  static const std::vector<OptionCommune> options = {
      option("json", "Rend le corps de la réponse de la porte, tel quel.", &LigneCommande::json),
      option("donnees", "Montre les données de la réponse plutôt que sa phrase.", &LigneCommande::donnees),
      option("help", "Montre l'aide, celle d'un verbe s'il est donné ; -h de même.", &LigneCommande::aide),
      option("version", "Dit la version du client.", &LigneCommande::version),
  };
  return options;
}

std::vector<ParamVoix> parametresCommuns(const OutilVoix* outil) {
  std::vector<ParamVoix> parametres;
  for (const auto& [commun, champ] : optionsCommunes())
    if (!outil || std::ranges::count(outil->parametres, commun.nom, &ParamVoix::nom) == 0)
      parametres.push_back(commun);
  return parametres;
}

Resultat<LigneCommande, FauteLigne> LigneCommande::lire(const std::vector<std::string>& arguments) {
  return Decoupage(arguments).faire();
}

}  // namespace tarnavelle
