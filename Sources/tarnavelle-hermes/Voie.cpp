#include "Voie.hpp"

#include "Hermes/RequeteGateway.hpp"

namespace tarnavelle {
namespace {

/// Straight to an address: on this machine, or over https.
class VoieDirecte final : public Voie {
 public:
  explicit VoieDirecte(const ReglagesHermes& reglages)
      : passerelle_(reglages.passerelle()), refus_(reglages.refusVoie("")) {}

  Resultat<Ouverte, std::string> ouvrir(const Dire&) override {
    if (refus_) return Sinon{*refus_};
    return Ouverte{.base = passerelle_.url,
                   .cle = passerelle_.cle,
                   .modele = RequeteGateway::modele({.annonce = {}, .surcharge = passerelle_.modele})};
  }

  Resultat<std::string, std::string> rejouer(const std::string&) override { return std::string(); }

  void interrompre() override {}

 private:
  const ReglagesHermes::Passerelle passerelle_;
  const std::optional<std::string> refus_;
};

}  // namespace

std::unique_ptr<Voie> voieReglee(const ReglagesHermes& reglages, const AccesSSH& acces) {
  AccesSSH voulu = acces;
  voulu.hote = reglages.hotePour(acces.hote);
  if (!voulu.hote.empty()) return voieSSH(reglages.passerelle(), voulu);
  return std::make_unique<VoieDirecte>(reglages);
}

}  // namespace tarnavelle
