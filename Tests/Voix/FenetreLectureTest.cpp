#include "Voix/FenetreLecture.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <thread>

namespace tarnavelle {
namespace {

using namespace std::chrono_literals;

TEST(FenetreLecture, LeSonSeMetEnFile) {
  FenetreLecture f;
  EXPECT_FALSE(f.audible(-1s));
  for (int i = 0; i < 2; ++i) EXPECT_EQ(f.planifier(24000, 100s, 24000), 24000);
  EXPECT_EQ(f.restantSecondes(101.5s), 0.5s);
  EXPECT_TRUE(f.audible(102.34s));
  EXPECT_FALSE(f.audible(102.35s));

  for (const auto& [n, frequence] : {std::pair(0, 24000.), {-5, 24000.}, {5, 0.5}, {5, -1.}, {5, std::nan("")}})
    EXPECT_EQ(f.planifier(n, 110s, frequence), n) << frequence;
  EXPECT_EQ(f.finDeLecture, 102s);
  f.planifier(1, 110s, 1);
  EXPECT_EQ(f.finDeLecture, 111s);
}

// 24 kHz, on the real clock.
TEST(FenetreHautParleur, SertDeuxFils) {
  FenetreHautParleur f;
  std::thread lecteur([&] {
    for (int i = 0; i < 1000; ++i) EXPECT_EQ(f.planifier(2400), 2400);
  });
  for (int i = 0; i < 1000; ++i) (void)f.parleEncore();
  lecteur.join();
  EXPECT_TRUE(f.parleEncore());
  EXPECT_NEAR(f.restantSecondes().count(), 100, 30);
  f.vider();
  EXPECT_FALSE(f.parleEncore());
}

}  // namespace
}  // namespace tarnavelle
