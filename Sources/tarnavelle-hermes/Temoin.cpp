#include "Temoin.hpp"

#include <chrono>
#include <nlohmann/json.hpp>
#include <random>

#include "Agents/CrochetAgent.hpp"
#include "Socle/EcritureJSON.hpp"
#include "Socle/JSON.hpp"
#include "Socle/Texte.hpp"

namespace tarnavelle {

Temoin::Temoin(const Variables& environnement)
    : journal_(environnement.octets(CrochetAgent::variable).value_or("")) {}

void Temoin::consigne(std::string_view texte) {
  std::random_device hasard;
  tour_ = std::to_string(hasard()) + "-" + std::to_string(hasard());
  noter("UserPromptSubmit", "prompt", texte);
}

void Temoin::noter(std::string_view evenement, std::string_view cle, std::string_view texte) {
  if (journal_.empty()) return;
  Json dit = {{"hook_event_name", evenement}, {std::string(cle), Texte::reparer(texte)}};
  if (!tour_.empty()) dit["prompt_id"] = tour_;
  const auto quand = std::chrono::duration_cast<std::chrono::milliseconds>(
      std::chrono::system_clock::now().time_since_epoch());
  const std::string ecrit = EcritureJSON::compacte(dit).value_or("{}");
  CrochetAgent::ajouter(journal_, CrochetAgent::ligne({"conversation", evenement, ecrit, quand}));
}

}  // namespace tarnavelle
