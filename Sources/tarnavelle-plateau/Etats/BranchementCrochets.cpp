// How each program is made to fire its hooks at launch, without a trace in its own settings.
#include <array>
#include <string>

#include "Agents/AgentCLI.hpp"
#include "Agents/CrochetAgent.hpp"
#include "Agents/InjectionPorte.hpp"
#include "Etats/Crochets.hpp"
#include "ModulesEmbarques.hpp"
#include "Socle/EcritureJSON.hpp"
#include "Socle/LectureJSON.hpp"
#include "Socle/Shell.hpp"

namespace tarnavelle::Plateau::Crochets {
namespace {

constexpr std::array claude = {"SessionStart",       "UserPromptSubmit",  "PreToolUse",   "PostToolUse",
                               "PostToolUseFailure", "PermissionRequest", "Notification", "Stop",
                               "StopFailure",        "SessionEnd"};
constexpr std::array codex = {"SessionStart", "UserPromptSubmit",  "PreToolUse",
                              "PostToolUse",  "PermissionRequest", "Stop",
                              "Interrupt",    "SessionEnd"};
constexpr std::array gemini = {"SessionStart", "BeforeAgent", "BeforeTool", "AfterTool",
                               "Notification", "AfterAgent",  "SessionEnd"};

/// The line that a program's shell runs.
std::string commande(const Lieux& lieux, std::string_view programme, std::string_view evenement) {
  return Shell::mot(lieux.ctl) + " crochet " + std::string(programme) + " " + std::string(evenement);
}

/// The hooks' part of a settings file; `delai` in the program's own unit.
template <class Evenements>
Json reglages(const Lieux& lieux, std::string_view programme, const Evenements& evenements, int delai) {
  Json hooks = Json::object();
  for (const std::string_view evenement : evenements) {
    Json commandes = Json::array(
        {{{"type", "command"}, {"command", commande(lieux, programme, evenement)}, {"timeout", delai}}});
    hooks[std::string(evenement)] = Json::array({{{"hooks", std::move(commandes)}}});
  }
  return {{"hooks", std::move(hooks)}};
}

/// RFC 8089: what is not plain stands as %XX, the blanks of the board's own folder on macOS too.
std::string urlDe(const std::filesystem::path& fichier) {
  constexpr std::string_view chiffres = "0123456789ABCDEF";
  std::string url = "file://";
  for (const char c : fichier.string()) {
    const auto octet = static_cast<unsigned char>(c);
    const bool simple = (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') ||
                        std::string_view("/-._~").find(c) != std::string_view::npos;
    if (simple)
      url += c;
    else
      url.append({'%', chiffres[octet >> 4U], chiffres[octet & 15U]});
  }
  return url;
}

std::optional<Branchement> parFichier(std::string_view programme, const Json& reglages, const Lieux& lieux) {
  auto texte = EcritureJSON::lisible(reglages);
  if (!texte) return std::nullopt;
  Branchement branchement;
  branchement.fichiers.emplace_back(lieux.dossier / (std::string(programme) + "-crochets.json"),
                                    *std::move(texte));
  return branchement;
}

}  // namespace

std::optional<Branchement> branchement(std::string_view programme, const Lieux& lieux, const Json& autres) {
  std::optional<Branchement> fait;
  if (programme == AgentCLI::claude().id) {
    constexpr int secondes = 5;
    fait = parFichier(programme, reglages(lieux, programme, claude, secondes), lieux);
    if (fait) fait->mots = {"--settings", fait->fichiers.front().first.string()};
  } else if (programme == AgentCLI::gemini().id) {
    constexpr int millisecondes = 5000;
    Json tous = reglages(lieux, programme, gemini, millisecondes);
    tous.update(autres);
    fait = parFichier(programme, tous, lieux);
    if (fait) fait->environnement["GEMINI_CLI_SYSTEM_DEFAULTS_PATH"] = fait->fichiers.front().first.string();
  } else if (programme == AgentCLI::codex().id) {
    fait.emplace();
    for (const std::string_view evenement : codex) {
      const std::string ligne = InjectionPorte::tomlChaine(commande(lieux, programme, evenement));
      fait->mots.insert(fait->mots.end(), {"-c", "hooks." + std::string(evenement) +
                                                     "=[{hooks=[{type=\"command\",command=" + ligne + "}]}]"});
    }
    // Without it, each launch asks the operator to review them, and skips them.
    fait->mots.emplace_back("--dangerously-bypass-hook-trust");
  } else if (programme == "opencode") {
    const auto module = lieux.dossier / "opencode-crochets.js";
    Json tous = {{"plugin", Json::array({urlDe(module)})}};
    tous.update(autres);
    auto texte = EcritureJSON::compacte(tous);
    if (!texte) return std::nullopt;
    fait.emplace();
    fait->fichiers.emplace_back(module, moduleOpencode);  // it has no hooks, but modules
    fait->environnement["OPENCODE_CONFIG_CONTENT"] = *std::move(texte);
  }
  if (fait) fait->environnement[CrochetAgent::variable] = lieux.journal.string();
  return fait;
}

}  // namespace tarnavelle::Plateau::Crochets
