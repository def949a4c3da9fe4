// In an ordinary build: feeds every file of the folder given as argument to the fuzz target, so that
// the inputs kept in the corpus go on being tested.
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>

#include "Cible.hpp"

int main(int argc, char** argv) {
  int joues = 0;
  if (argc > 1)
    for (const auto& entree : std::filesystem::directory_iterator(argv[1])) {
      std::cout << entree.path().filename().string() << std::endl;  // flushed: a crash names its input
      std::ifstream fichier(entree.path(), std::ios::binary);
      const std::string octets(std::istreambuf_iterator<char>(fichier), {});
      LLVMFuzzerTestOneInput(reinterpret_cast<const unsigned char*>(octets.data()), octets.size());
      ++joues;
    }
  return joues > 0 ? 0 : 1;
}
