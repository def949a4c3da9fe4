// What a slice of a remote agent's log or transcript costs to decode, as large as one read gives it.
#include <benchmark/benchmark.h>

#include <string>

#include "Agents/EvenementVol.hpp"
#include "Agents/FichierDistant.hpp"
#include "Agents/TranscriptClaude.hpp"
#include "Socle/EcritureJSON.hpp"
#include "Socle/LectureJSON.hpp"

namespace tarnavelle {
namespace {

constexpr auto tranche = static_cast<std::size_t>(FichierDistant::lectureMax);

/// A source file or a reply: accents now and then, an escape on every line.
std::string longTexte(std::size_t taille) {
  std::string texte;
  while (texte.size() < taille) texte += "  if (l'été revient) dire(\"bonjour à tous\", 42);  // et à toutes\n";
  return texte;
}

Json outil(const std::string& contenu) {
  return {{"session_id", "9c008bb0-9aa5-4d03-a36c-d5c225c89132"},
          {"transcript_path", "/home/moi/.claude/projects/-projet/9c008bb0-9aa5-4d03-a36c-d5c225c89132.jsonl"},
          {"cwd", "/home/moi/projet"},
          {"permission_mode", "acceptEdits"},
          {"prompt_id", "2f0c1ab4-7d7e-4d53-9e58-0c3d1f6f7a10"},
          {"tool_use_id", "toolu_01AbCdEfGhIjKlMnOpQrStUv"},
          {"hook_event_name", "PreToolUse"},
          {"tool_name", "Write"},
          {"tool_input", {{"file_path", "/home/moi/projet/src/main.cpp"}, {"content", contenu}}}};
}

Json consigne(const std::string& texte) {
  return {{"hook_event_name", "UserPromptSubmit"}, {"transcript_path", "/t.jsonl"}, {"prompt", texte}};
}

Json reponse(const std::string& texte) {
  const Json cache = {{"ephemeral_1h_input_tokens", 9907}, {"ephemeral_5m_input_tokens", 0}};
  const Json usage = {
      {"input_tokens", 10},
      {"output_tokens", 135},
      {"cache_creation_input_tokens", 9907},
      {"cache_read_input_tokens", 22820},
      {"cache_creation", cache},
      {"service_tier", "standard"},
      {"server_tool_use", {{"web_search_requests", 0}, {"web_fetch_requests", 0}}},
      {"iterations", {{{"input_tokens", 10}, {"output_tokens", 135}, {"cache_creation", cache}}}}};
  return {{"type", "assistant"},
          {"uuid", "8b187fe3-61d8-4b9b-bf2d-b9a322ecbd0f"},
          {"parentUuid", "14e320ae-1775-40dc-9c75-e3578b12cac1"},
          {"isSidechain", false},
          {"requestId", "req_011AbCdEfGhIjKlMnOpQrStU"},
          {"timestamp", "2026-08-20T10:21:56.220Z"},
          {"userType", "external"},
          {"cwd", "/home/moi/projet"},
          {"sessionId", "9c008bb0-9aa5-4d03-a36c-d5c225c89132"},
          {"version", "2.1.233"},
          {"gitBranch", "HEAD"},
          {"message",
           {{"id", "msg_011AbCdEfGhIjKlMnOpQrStU"},
            {"type", "message"},
            {"role", "assistant"},
            {"stop_reason", "end_turn"},
            {"stop_sequence", nullptr},
            {"usage", usage},
            {"content", {{{"type", "text"}, {"text", texte}}}}}}};
}

std::size_t lireCarnet(std::string_view octets) { return CarnetDeVol::lire(octets).evenements.size(); }
std::size_t lireTranscript(std::string_view octets) { return TranscriptClaude::lire(octets).textes.size(); }

/// A slice of as many lines as one read prints, each with the members of a real one and a text of that many
/// bytes.
template <Json (*ligne)(const std::string&), std::size_t (*lire)(std::string_view)>
void lireTranche(benchmark::State& etat) {
  const auto longueur = static_cast<std::size_t>(etat.range(0));
  const std::string une = EcritureJSON::compacte(ligne(longTexte(longueur))).value() + "\n";
  std::string octets;
  std::size_t lignes = 0;
  for (; octets.size() + une.size() <= tranche; ++lignes) octets += une;
  for (auto _ : etat)
    if (lire(octets) != lignes) return etat.SkipWithError("tranche mal lue");
  etat.SetBytesProcessed(etat.iterations() * static_cast<std::int64_t>(octets.size()));
}
BENCHMARK(lireTranche<outil, lireCarnet>)->Arg(64)->Arg(1024)->Arg(16 * 1024)->Arg(200 * 1024);
BENCHMARK(lireTranche<consigne, lireCarnet>)->Arg(1024)->Arg(16 * 1024)->Arg(200 * 1024);
BENCHMARK(lireTranche<reponse, lireTranscript>)->Arg(64)->Arg(1024)->Arg(16 * 1024)->Arg(200 * 1024);

}  // namespace
}  // namespace tarnavelle
