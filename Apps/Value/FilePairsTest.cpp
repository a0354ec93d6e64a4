// SPDX-License-Identifier: Apache-2.0
#include "Apps/Value/FilePairs.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using Strings = std::vector<std::string>;

ReaderFiles Reader(const std::string& written, const Strings& files) {
  ReaderFiles reader{written, {}};
  for (const std::string& file : files) reader.files.push_back({file, ""});
  return reader;
}

struct Paired {
  std::vector<Strings> sets;
  Strings notes;
  std::string error;
};

Paired Pair(const std::vector<ReaderFiles>& readers, PairRule rule) {
  Paired paired;
  std::vector<FileSet> sets;
  paired.error = PairFiles(readers, rule, sets, paired.notes).GetMessage();
  for (const FileSet& set : sets) {
    Strings& names = paired.sets.emplace_back();
    for (const GlobFile& file : set) names.push_back(file.file.string());
  }
  return paired;
}

TEST(FilePairs, OneReaderHasSetsOfOne) {
  const Paired paired = Pair({Reader("a=*", {"x", "y"})}, PairRule::kOrder);
  EXPECT_EQ(paired.sets, (std::vector<Strings>{{"x"}, {"y"}}));
  EXPECT_EQ(paired.error, "");
}

TEST(FilePairs, InOrderTheFirstGoesWithTheFirst) {
  const Paired paired = Pair({Reader("a=*", {"1.exr", "2.exr"}), Reader("b=*", {"m.png", "n.png"})}, PairRule::kOrder);
  EXPECT_EQ(paired.sets, (std::vector<Strings>{{"1.exr", "m.png"}, {"2.exr", "n.png"}}));
}

TEST(FilePairs, InOrderUnequalCountsAreAnError) {
  const Paired paired = Pair({Reader("a=*", {"1", "2"}), Reader("b=?", {"m"})}, PairRule::kOrder);
  EXPECT_TRUE(paired.sets.empty());
  EXPECT_EQ(paired.error,
            "--each a=* matches 2 files and --each b=? 1; they are paired in order, so they must be equally many "
            "(--pair stem pairs equal names)");
}

TEST(FilePairs, ByStemEqualNamesGoTogetherWhateverTheirEndings) {
  const Paired paired =
      Pair({Reader("a=*", {"h/1.exr", "h/2.exr", "h/3.exr"}), Reader("b=?", {"m/2.png", "m/1.tif"})}, PairRule::kStem);
  EXPECT_EQ(paired.sets, (std::vector<Strings>{{"h/1.exr", "m/1.tif"}, {"h/2.exr", "m/2.png"}}));
  EXPECT_EQ(paired.notes, (Strings{"\"h/3.exr\" is left out: --each b=? matches no file of the stem \"3\""}));
}

TEST(FilePairs, ByStemPartnersMayLackOnEitherSide) {
  const Paired paired = Pair({Reader("a=*", {"1.exr"}), Reader("b=?", {"2.png"})}, PairRule::kStem);
  EXPECT_TRUE(paired.sets.empty());
  EXPECT_EQ(paired.notes, (Strings{"\"1.exr\" is left out: --each b=? matches no file of the stem \"1\"",
                                   "\"2.png\" is left out: --each a=* matches no file of the stem \"2\""}));
}

TEST(FilePairs, ByStemTwoFilesOfOneStemAreAnError) {
  const Paired paired = Pair({Reader("a=*", {"1.exr", "1.png"}), Reader("b=?", {"1.tif"})}, PairRule::kStem);
  EXPECT_EQ(paired.error, "--each a=*: \"1.exr\" and \"1.png\" have one stem, so neither has a partner of its own");
}

}  // namespace
