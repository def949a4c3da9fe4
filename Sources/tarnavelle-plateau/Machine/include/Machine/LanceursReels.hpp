// How real agent programs are started: found on the PATH or where the catalogue knows them, connected to the
// door, their hooks firing, their conversation chosen in advance where they take one. Tokens stand in files of
// mode 0600 and in the agent's environment, never in words. Safe from any thread.
#pragma once

#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "Agents/AgentCLI.hpp"
#include "Socle/Environnement.hpp"
#include "Verbes/Moyens.hpp"

namespace tarnavelle::Plateau {

struct ReglagesLanceurs {
  std::function<std::string()> url;  ///< the door's base URL, once it is open
  /// The token of an agent by its key; nothing when it gets none.
  std::function<std::optional<std::string>(std::string_view cle)> jeton;
  std::string pont;                       ///< the bridge's absolute path; empty when it is not installed
  std::string ctl;                        ///< the client's; the same
  std::string hermes{};                   ///< tarnavelle-hermes's; the same
  std::vector<std::string> motsSSH{};     ///< by which it is told how to reach other machines
  std::filesystem::path conversations{};  ///< where those with Hermès are kept
  std::filesystem::path dossier;          ///< where each agent gets a private folder of its own
  std::function<std::filesystem::path(std::string_view cle)> journal;  ///< the log of its hooks
  Variables environnement;                                             ///< HOME, PATH and SHELL count
  /// Starts an agent on another machine; empty where none can be reached.
  std::function<Resultat<Depart, std::string>(const Embarquement&, const AgentCLI&)> ailleurs{};
};

class LanceursReels final : public Lanceurs {
 public:
  explicit LanceursReels(ReglagesLanceurs reglages) : reglages_(std::move(reglages)) {}

  /// What the agents will lack for want of a program of the house: French sentences, a line each, or nothing.
  std::string manques() const;

  std::vector<std::string> enPlus() const override;
  std::optional<std::string> usuel() override;
  std::string absolu(const std::string& dossier) const override;
  std::optional<std::string> empechement(const Embarquement& embarquement) const override;
  Resultat<Depart, std::string> agent(const Embarquement& embarquement) override;
  /// The user's shell runs the line and ends with it; its screen stays.
  std::optional<Lancement> shell(const std::string& cle, const std::string& session,
                                 const std::string& commande, const std::string& dossier) override;
  std::optional<Resultat<std::string, std::string>> conversation(const std::string& hote) const override;
  void oublier(const std::string& cle) override;

 private:
  std::filesystem::path dossierDe(const std::string& cle) const;
  std::optional<std::string> binaire(const std::string& programme) const;
  Resultat<Depart, std::string> converser(const Embarquement& embarquement);

  const ReglagesLanceurs reglages_;
};

}  // namespace tarnavelle::Plateau
