#include "ScriptsCompletion.hpp"

#include <array>

namespace tarnavelle {
namespace {

// In each, the client is the program of the line being typed, run only when a key asks for it.

// In the language of bash 3.2, which a Mac has. It gives "--option=value" as one word where its successors give
// three, though it too completes no more than the value.
constexpr std::string_view bash = R"sh(# tarnavellectl pour bash : eval "$(tarnavellectl completions bash)"
_tarnavellectl() {
  local programme="${COMP_WORDS[0]}" tape="${COMP_WORDS[COMP_CWORD]}" option= guillemet= mot
  case $programme in
    \~/*) programme=$HOME/${programme#\~/} ;;
  esac
  if [[ $tape == --*=* && $COMP_WORDBREAKS == *=* ]]; then
    option=${tape%%=*}= tape=${tape#*=}
  fi
  case $tape in
    [\"\']*) guillemet=${tape:0:1} tape=${tape:1} ;;
    =) tape= ;;
  esac
  COMPREPLY=()
  while IFS=$'\t' read -r mot _; do
    mot=${mot#"$option"}
    [[ $mot == "${tape//\\/}"* ]] || continue
    [[ $guillemet ]] || mot=${mot// /\\ }
    COMPREPLY+=("$mot")
  done < <("$programme" completions proposer "${COMP_WORDS[@]:1:COMP_CWORD}" 2>/dev/null)
}
complete -o default -F _tarnavellectl tarnavellectl
)sh";

constexpr std::string_view zsh = R"sh(#compdef tarnavellectl
# tarnavellectl pour zsh : eval "$(tarnavellectl completions zsh)"
_tarnavellectl() {
  local programme=${words[1]/#\~\//$HOME/} ligne
  local -a candidats
  for ligne in "${(@f)$("$programme" completions proposer "${(@)words[2,CURRENT]}" 2>/dev/null)}"; do
    [[ -n $ligne ]] && candidats+=("${${ligne%%$'\t'*}//:/\\:}:${ligne#*$'\t'}")
  done
  if (( $#candidats )); then
    _describe tarnavellectl candidats
  else
    _files
  fi
}
if [[ ${funcstack[1]} == _tarnavellectl ]]; then
  _tarnavellectl "$@"
else
  compdef _tarnavellectl tarnavellectl
fi
)sh";

constexpr std::string_view fish = R"(# tarnavellectl pour fish : tarnavellectl completions fish | source
function __tarnavellectl_proposer
    set -l mots (commandline -opc)
    set -l courant (commandline -ct)
    set -q courant[1]; or set courant ''
    set -l programme (string replace -r '^~(?=/)' "$HOME" -- $mots[1])
    set -l candidats ($programme completions proposer $mots[2..-1] $courant 2>/dev/null)
    if set -q candidats[1]
        printf '%s\n' $candidats
    else
        __fish_complete_path $courant
    end
end
complete -c tarnavellectl -f -a '(__tarnavellectl_proposer)'
)";

}  // namespace

std::span<const ScriptCompletion> scriptsCompletion() {
  static constexpr std::array scripts{ScriptCompletion{"bash", bash}, ScriptCompletion{"zsh", zsh},
                                      ScriptCompletion{"fish", fish}};
  return scripts;
}

}  // namespace tarnavelle
