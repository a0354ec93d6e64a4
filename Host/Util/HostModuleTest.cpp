// SPDX-License-Identifier: Apache-2.0
#include "Host/Util/HostModule.h"

#include <gtest/gtest.h>

namespace {

using ScEng::HostModule;

TEST(HostModule, IsFoundBesideTheHostsLibraries) {
  const HostModule module("HostCodecPng", "the module of image formats");
  EXPECT_EQ(module.GetProblem(), "");
  EXPECT_EQ(module.GetFile().filename(), "libHostCodecPng.so");
  EXPECT_TRUE(std::filesystem::is_regular_file(module.GetFile()));
  EXPECT_TRUE(std::filesystem::exists(module.GetFile().parent_path() / "libHostUtil.so"));
}

TEST(HostModule, PrefersTheLibraryOfItsOwnVersion) {
  const HostModule module("HostWidgets", "the library of attribute panels");
  EXPECT_EQ(module.GetProblem(), "");
  EXPECT_EQ(module.GetFile().filename(), "libHostWidgets.so." VALUE_LIBRARY_VERSION);
}

TEST(HostModule, GivesItsEntryPoint) {
  HostModule module("HostCodecPng", "the module of image formats");
  using Function = const void* (*)();
  const auto function = module.Load<Function>("GetImageCodec");
  ASSERT_NE(function, nullptr) << module.GetProblem();
  EXPECT_NE(function(), nullptr);
  EXPECT_EQ(HostModule("HostCodecPng", "").Load<Function>("GetImageCodec"), function);
}

TEST(HostModule, SaysWhichFileIsMissing) {
  HostModule module("HostNothing", "the module of nothing");
  EXPECT_EQ(module.GetProblem(), "the module of nothing cannot be loaded: there is no " + module.GetFile().string());
  EXPECT_EQ(module.Load<void (*)()>("Anything"), nullptr);
}

TEST(HostModule, FindsTheHostsPrograms) {
  const std::filesystem::path folder = HostModule("HostCodecPng", "").GetFile().parent_path();
  EXPECT_EQ(ScEng::FindHostProgram("value-decoder", "../nowhere/value-decoder"), folder / "value-decoder");
  EXPECT_EQ(ScEng::FindHostProgram("value-nothing", "../libexec/value-nothing"),
            folder.parent_path() / "libexec/value-nothing");
}

TEST(HostModule, SaysWhichEntryPointIsMissing) {
  HostModule module("HostCodecPng", "the module of image formats");
  EXPECT_EQ(module.Load<void (*)()>("NoSuchEntryPoint"), nullptr);
  EXPECT_NE(module.GetProblem().find("NoSuchEntryPoint"), std::string::npos) << module.GetProblem();
  EXPECT_EQ(module.GetProblem().find("the module of image formats cannot be loaded: "), 0U);
}

}  // namespace
