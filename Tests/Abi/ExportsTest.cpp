// SPDX-License-Identifier: Apache-2.0
//
// What the built library shows to the outside.
#include <elf.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <fstream>
#include <iterator>
#include <limits>
#include <set>
#include <string>
#include <vector>

#include "Host/Tools/LibraryInterface.h"
#include "Host/Tools/NodeInterface.h"
#include "Host/Util/RefCounter.h"
#include "Tests/Abi/LoadedLibrary.h"
#include "Tests/Support/FirstTwenty.h"

namespace {

struct Symbol {
  std::string name;
  unsigned char binding = 0;
  unsigned char visibility = 0;
  bool is_defined = false;
};

/// The dynamic symbols of the built file.
std::vector<Symbol> ReadDynamicSymbols() {
  std::ifstream stream(VALUE_LIBRARY_FILE, std::ios::binary);
  const std::vector<char> bytes{std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
  const auto read = [&]<class Record>(std::size_t offset, Record record) {
    if (offset + sizeof(Record) > bytes.size()) throw std::out_of_range("the file is cut short");
    std::memcpy(&record, bytes.data() + offset, sizeof(Record));
    return record;
  };
  const auto header = read(0, Elf64_Ehdr{});
  EXPECT_EQ(std::string(reinterpret_cast<const char*>(header.e_ident), 4), ELFMAG);
  const auto section = [&](std::size_t index) {
    return read(header.e_shoff + index * header.e_shentsize, Elf64_Shdr{});
  };
  std::vector<Symbol> symbols;
  for (std::size_t index = 0; index < header.e_shnum; ++index) {
    const Elf64_Shdr table = section(index);
    if (table.sh_type != SHT_DYNSYM) continue;
    const Elf64_Shdr names = section(table.sh_link);
    // The first entry of every table is empty.
    for (std::size_t at = sizeof(Elf64_Sym); at < table.sh_size; at += sizeof(Elf64_Sym)) {
      const auto entry = read(table.sh_offset + at, Elf64_Sym{});
      symbols.push_back({bytes.data() + names.sh_offset + entry.st_name,
                         static_cast<unsigned char>(ELF64_ST_BIND(entry.st_info)),
                         static_cast<unsigned char>(ELF64_ST_VISIBILITY(entry.st_other)), entry.st_shndx != SHN_UNDEF});
    }
  }
  return symbols;
}

TEST(Exports, AreTheThreeEntryPointsAndNothingElse) {
  std::multiset<std::string> exported;
  for (const Symbol& symbol : ReadDynamicSymbols()) {
    if (symbol.is_defined && symbol.binding != STB_LOCAL) exported.insert(symbol.name);
  }
  EXPECT_EQ(exported, (std::multiset<std::string>{"GetLibraryInterface", "GetNodeInterface", "GetNumNodeInterfaces"}));
}

TEST(Exports, AreGlobalAndVisible) {
  for (const Symbol& symbol : ReadDynamicSymbols()) {
    if (!symbol.is_defined || symbol.binding == STB_LOCAL) continue;
    EXPECT_EQ(symbol.binding, STB_GLOBAL) << symbol.name;
    EXPECT_EQ(symbol.visibility, STV_DEFAULT) << symbol.name;
  }
}

TEST(Exports, HoldNoUniqueSymbolThatWouldKeepTheFileLoaded) {
  const std::vector<Symbol> symbols = ReadDynamicSymbols();
  EXPECT_GT(symbols.size(), 3U);
  for (const Symbol& symbol : symbols) EXPECT_NE(symbol.binding, STB_GNU_UNIQUE) << symbol.name;
}

/// How many node types the library offers, which are the first twenty at least.
std::uint64_t CountTypes(const Abi::LoadedLibrary& library) {
  const std::int32_t count = library.GetNumNodeInterfaces();
  EXPECT_GE(count, static_cast<std::int32_t>(Testing::kFirstTwenty.size()));
  return static_cast<std::uint64_t>(count);
}

TEST(EntryPoints, AnswerNullFromTheCountOn) {
  const Abi::LoadedLibrary library;
  const std::uint64_t count = CountTypes(library);
  constexpr std::uint64_t kLargest = std::numeric_limits<std::uint64_t>::max();
  // The larger ones would be valid indices if they were cut to 32 bits.
  for (const std::uint64_t index :
       {count, count + 1, std::uint64_t{1} << 32, (std::uint64_t{1} << 32) + 5, kLargest - 19, kLargest}) {
    EXPECT_EQ(library.GetNodeInterface(index), nullptr) << index;
  }
}

TEST(EntryPoints, MakeNewObjectsAtEachCall) {
  const Abi::LoadedLibrary library;
  for (std::uint64_t index = 0; index < CountTypes(library); ++index) {
    const ScEng::RefPtr<NodeInterface> first(library.GetNodeInterface(index));
    const ScEng::RefPtr<NodeInterface> second(library.GetNodeInterface(index));
    EXPECT_NE(first.Get(), second.Get());
    EXPECT_NE(first->GetNodeFactory(), second->GetNodeFactory());
  }
  LibraryInterface* first = library.GetLibraryInterface();
  LibraryInterface* second = library.GetLibraryInterface();
  EXPECT_NE(first, second);
  // A library object holds nothing but its virtual table and has no destructor to call.
  operator delete(first);
  operator delete(second);
}

TEST(EntryPoints, StartCountsAtZero) {
  const Abi::LoadedLibrary library;
  for (std::uint64_t index = 0; index < CountTypes(library); ++index) {
    NodeInterface* descriptor = library.GetNodeInterface(index);
    EXPECT_EQ(descriptor->GetRefCount(), 0U);
    EXPECT_EQ(descriptor->GetNodeFactory()->GetRefCount(), 0U);
    const Node* node = descriptor->GetNodeFactory()->CreateNode();
    EXPECT_EQ(node->GetRefCount(), 0U);
    delete node;
    delete descriptor;
  }
}

TEST(EntryPoints, GiveTheFirstTwentyTypesInTheirOrder) {
  const Abi::LoadedLibrary library;
  for (std::size_t index = 0; index < Testing::kFirstTwenty.size(); ++index) {
    const ScEng::RefPtr<NodeInterface> descriptor(library.GetNodeInterface(index));
    EXPECT_EQ(descriptor->GetNodeFactory()->GetTypeName(), Testing::kFirstTwenty[index].type_name);
  }
}

}  // namespace
