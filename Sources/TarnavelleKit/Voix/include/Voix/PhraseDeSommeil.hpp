// The phrases by which the operator sends the voice back to sleep. What then happens is the session's
// business. Pure functions, safe from any thread.
#pragma once

#include <array>
#include <set>
#include <string>
#include <string_view>

namespace tarnavelle::PhraseDeSommeil {

inline constexpr std::array<std::string_view, 15> corpus = {"raccroche",
                                                            "tu peux raccrocher",
                                                            "va dormir",
                                                            "retourne dormir",
                                                            "arrête d'écouter",
                                                            "bonne nuit",
                                                            "bonne nuit tarnavelle",
                                                            "au revoir tarnavelle",
                                                            "c'est tout tarnavelle",
                                                            "c'est tout merci",
                                                            "go to sleep",
                                                            "go back to sleep",
                                                            "stop listening",
                                                            "goodbye tarnavelle",
                                                            "that's all tarnavelle"};

/// The corpus as utterances are compared with it.
const std::set<std::string, std::less<>>& corpusNormalise();

/// Lower case without accents; runs of letters and numbers, one space apart.
std::string normaliser(std::string_view texte);

/// Whether the whole utterance, normalised, is one of the phrases.
bool correspond(std::string_view texte);

}  // namespace tarnavelle::PhraseDeSommeil
