#include "Agents/CarnetDeVol.hpp"

#include "Socle/Texte.hpp"

namespace tarnavelle::CarnetDeVol {
namespace {

std::string fichierDistant(std::string_view session, std::string_view suffixe) {
  return std::string(dossierDistant).append("/").append(nomSur(session)).append(suffixe);
}

/// A text that printf's format prints as it stands, within single quotes.
std::string dansUnFormat(std::string_view texte) {
  std::string format;
  for (const char c : texte) {
    if (c == '\'') {
      format += R"('\'')";
      continue;
    }
    if (c == '%' || c == '\\') format += c;
    format += c;
  }
  return format;
}

}  // namespace

std::string nomSur(std::string_view nom) {
  const std::string sur = Texte::lettresEtNombres(nom, "._-");
  return sur.empty() ? "session" : sur;
}

std::string journalDistant(std::string_view session) { return fichierDistant(session, ".jsonl"); }

std::string reglagesDistant(std::string_view session) { return fichierDistant(session, ".hooks.json"); }

std::string commandeLecture(std::string_view session, std::int64_t curseur) {
  return "sh -c 'f=\"$HOME/" + journalDistant(session) + "\"; " + FichierDistant::impression("$f", curseur) +
         '\'';
}

std::string commandeTitres(std::string_view marque, std::int64_t queue) {
  std::string script = R"(for c in "$HOME/)" + std::string(dossierDistant) + R"SH("/*.jsonl; do
[ -f "$c" ] || continue
s=${c##*/}; s=${s%.jsonl}
p=$(grep -o '"transcript_path":"[^"]*"' "$c" 2>/dev/null | tail -1 | sed 's/.*"transcript_path":"//; s/"$//')
[ -n "$p" ] && [ -f "$p" ] || continue
t=$(tail -c )SH";
  script += std::to_string(queue);
  script += R"SH( "$p" 2>/dev/null | grep -o '"aiTitle":"[^"]*"' | tail -1 | sed 's/.*"aiTitle":"//; s/"$//')
[ -n "$t" ] && printf ')SH";
  script += dansUnFormat(marque);
  script += R"SH(%s:%s\n' "$s" "$t"
done
exit 0)SH";
  return script;
}

}  // namespace tarnavelle::CarnetDeVol
