// SPDX-License-Identifier: Apache-2.0
//
// The icons that the library carries: there while it is loaded, gone with it.
#include <gtest/gtest.h>

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QResource>
#include <QString>
#include <array>
#include <string>

#include "Host/Tools/NodeInterface.h"
#include "Tests/Abi/LoadedLibrary.h"

namespace {

const QString kFolder = ":/Value/Resources/Icons/";
const QString kOneIcon = kFolder + "Add12.png";

constexpr std::array kNames{"ToValue",
                            "Add",
                            "Subtract",
                            "Multiply",
                            "Divide",
                            "Power",
                            "Min",
                            "Max",
                            "Clamp",
                            "Steps",
                            "Condition",
                            "Compare",
                            "Range",
                            "Function",
                            "Relief",
                            "Distance",
                            "Gradient",
                            "AmbientOcclusion",
                            "ConnectedComponents",
                            "ComponentEdges"};

QByteArray ReadIcon(const QString& name) {
  QFile file(name);
  EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << name.toStdString();
  return file.readAll();
}

unsigned ReadNumber(const QByteArray& bytes, int offset) {
  unsigned number = 0;
  for (int i = 0; i < 4; ++i) number = number << 8 | static_cast<unsigned char>(bytes[offset + i]);
  return number;
}

void ExpectPng(const QByteArray& bytes, unsigned size) {
  ASSERT_GT(bytes.size(), 33);
  EXPECT_EQ(bytes.left(8), QByteArray("\x89PNG\r\n\x1a\n", 8));
  EXPECT_EQ(bytes.mid(12, 4), QByteArray("IHDR"));
  EXPECT_EQ(ReadNumber(bytes, 16), size);
  EXPECT_EQ(ReadNumber(bytes, 20), size);
  EXPECT_EQ(bytes.right(8).left(4), QByteArray("IEND"));
}

TEST(Icons, ComeAndGoWithTheLibraryTimeAndAgain) {
  for (int i = 0; i < 3; ++i) {
    SCOPED_TRACE(i);
    EXPECT_FALSE(QFile::exists(kOneIcon));
    EXPECT_FALSE(Abi::IsInProcess());
    {
      const Abi::LoadedLibrary library;
      EXPECT_TRUE(Abi::IsInProcess());
      EXPECT_TRUE(QFile::exists(kOneIcon));
    }
    EXPECT_FALSE(QFile::exists(kOneIcon));
    EXPECT_FALSE(Abi::IsInProcess());
  }
}

TEST(Icons, GoAlsoAfterTheLibraryWasUsed) {
  {
    const Abi::LoadedLibrary library;
    for (NodeInterface* descriptor : library.TakeDescriptors()) {
      const Node* node = descriptor->GetNodeFactory()->CreateNode();
      EXPECT_EQ(node->GetName(), descriptor->GetName());
      delete node;
      descriptor->Release();
    }
  }
  EXPECT_FALSE(QFile::exists(kOneIcon));
  EXPECT_FALSE(Abi::IsInProcess());
}

TEST(Icons, StayUntilTheLastOfTwoLoadsIsUndone) {
  Abi::LoadedLibrary first;
  {
    const Abi::LoadedLibrary second;
    EXPECT_TRUE(QFile::exists(kOneIcon));
  }
  EXPECT_TRUE(QFile::exists(kOneIcon));
  first.Unload();
  EXPECT_FALSE(QFile::exists(kOneIcon));
}

TEST(Icons, AreFortyPngsInTwoSizes) {
  const Abi::LoadedLibrary library;
  EXPECT_EQ(QDir(kFolder).entryList(QDir::Files).size(), 40);
  for (const char* name : kNames) {
    SCOPED_TRACE(name);
    ExpectPng(ReadIcon(kFolder + name + ".png"), 48);
    ExpectPng(ReadIcon(kFolder + name + "12.png"), 12);
  }
}

TEST(Icons, AreTheFilesOfTheSourceFolder) {
  const Abi::LoadedLibrary library;
  const QString sources = QString(VALUE_SOURCE_DIR) + "/Value/Resources/Icons/";
  for (const QString& name : QDir(kFolder).entryList(QDir::Files)) {
    EXPECT_EQ(ReadIcon(kFolder + name), ReadIcon(sources + name)) << name.toStdString();
  }
}

TEST(Icons, AreStoredUncompressed) {
  const Abi::LoadedLibrary library;
  for (const QString& name : QDir(kFolder).entryList(QDir::Files)) {
    const QResource resource(kFolder + name);
    EXPECT_TRUE(resource.isValid());
    EXPECT_EQ(resource.compressionAlgorithm(), QResource::NoCompression) << name.toStdString();
  }
}

TEST(Icons, AreNamedByTheDescriptors) {
  const Abi::LoadedLibrary library;
  std::size_t index = 0;
  for (NodeInterface* descriptor : library.TakeDescriptors()) {
    const std::string large = descriptor->GetIconPath();
    const std::string small = descriptor->GetSmallIconPath();
    EXPECT_EQ(large, std::string(":/Value/Resources/Icons/") + kNames[index] + ".png");
    EXPECT_EQ(small, std::string(":/Value/Resources/Icons/") + kNames[index] + "12.png");
    ExpectPng(ReadIcon(QString::fromStdString(large)), 48);
    ExpectPng(ReadIcon(QString::fromStdString(small)), 12);
    descriptor->Release();
    ++index;
  }
  EXPECT_EQ(index, kNames.size());
}

}  // namespace
