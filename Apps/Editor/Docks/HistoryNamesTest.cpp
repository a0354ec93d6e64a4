// SPDX-License-Identifier: Apache-2.0
#include "Apps/Editor/Docks/HistoryNames.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QTranslator>
#include <map>
#include <utility>
#include <vector>

namespace {

/// Texts of a language in which the parts of some steps stand the other way round.
class Backwards : public QTranslator {
 public:
  [[nodiscard]] bool isEmpty() const override { return false; }
  [[nodiscard]] QString translate(const char* context, const char* text, const char*, int) const override {
    static const std::map<QString, QString> texts = {
        {"Connect %1 to %2", "%2 <- %1"},
        {"Delete %n nodes and reconnect", "%n weg, verbunden"},
        {"Set %1", "%1 setzen"},
        {"Add frame", "Neuer Rahmen"},
    };
    const auto found = texts.find(QLatin1String(text));
    return QLatin1String(context) == QLatin1String("HistoryNames") && found != texts.end() ? found->second : QString();
  }
};

TEST(HistoryNames, HasTheWordsOfTheMenus) {
  const std::vector<std::pair<const char*, const char*>> steps = {
      {"Add Value Clamp", "Add Value Clamp"},
      {"Remove a", "Delete a"},
      {"Remove 3 nodes", "Delete 3 nodes"},
      {"Remove a and heal", "Delete a and reconnect"},
      {"Remove 12 nodes and heal", "Delete 12 nodes and reconnect"},
      {"Disable a", "Mute a"},
      {"Enable 2 nodes", "Unmute 2 nodes"},
      {"Remove frame \"To do\"", "Delete frame \"To do\""},
      {"Remove output a.image to b.png", "Remove output a.image to b.png"},
      {"Insert a between b.image and c.image", "Insert a between b.image and c.image"},
      {"Rename a to b", "Rename a to b"},
  };
  for (const auto& [name, shown] : steps) EXPECT_EQ(TranslateStep(name), QLatin1String(shown));
}

TEST(HistoryNames, PutsPartsWhereTheLanguageHasThem) {
  Backwards language;
  QCoreApplication::installTranslator(&language);
  EXPECT_EQ(TranslateStep("Connect a.image to b.image"), "b.image <- a.image");
  EXPECT_EQ(TranslateStep("Remove 3 nodes and heal"), "3 weg, verbunden");
  EXPECT_EQ(TranslateStep("Add frame"), "Neuer Rahmen");
  // What looks like a place is part of a name.
  EXPECT_EQ(TranslateStep("Connect %2.image to %1.image"), "%1.image <- %2.image");
  EXPECT_EQ(TranslateStep("Set 100%.value"), "100%.value setzen");
  QCoreApplication::removeTranslator(&language);
}

TEST(HistoryNames, LeavesOtherTextsAlone) {
  EXPECT_EQ(TranslateStep("3 Knoten verschieben"), QStringLiteral("3 Knoten verschieben"));
  EXPECT_EQ(TranslateStep("Paste"), QStringLiteral("Paste"));
  EXPECT_EQ(TranslateStep(""), QString());
  EXPECT_EQ(TranslateStep("Set "), QStringLiteral("Set "));
}

}  // namespace
