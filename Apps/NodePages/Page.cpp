// SPDX-License-Identifier: Apache-2.0
#include "Apps/NodePages/Page.h"

#include <algorithm>
#include <charconv>
#include <sstream>

namespace {

template <class Number>
std::string Format(Number number) {
  char text[64];
  return std::string(text, std::to_chars(text, text + sizeof(text), number, std::chars_format::fixed).ptr);
}

std::string Code(const std::string& text) { return "`" + text + "`"; }

std::string DescribeDefault(const Attribute& attribute) {
  switch (attribute.GetKind()) {
    case Attribute::Kind::kNumber: return Format(attribute.GetDefault().GetNumber());
    case Attribute::Kind::kFlag: return attribute.GetDefault().GetFlag() ? "true" : "false";
    case Attribute::Kind::kChoice: return Code(attribute.GetDefault().GetText());
    default: return {};
  }
}

std::string DescribeValues(const Attribute& attribute) {
  if (attribute.GetKind() == Attribute::Kind::kNumber) {
    return Format(attribute.GetLowest()) + " to " + Format(attribute.GetHighest());
  }
  constexpr std::size_t kFewWords = 6;
  const auto& words = attribute.GetChoices();
  if (words.size() > kFewWords) return std::to_string(words.size()) + " words, see below";
  std::string text;
  for (const std::string& word : words) text += (text.empty() ? "" : ", ") + Code(word);
  return attribute.GetKind() == Attribute::Kind::kFlag ? "true, false" : text;
}

std::string DescribeStep(const Attribute& attribute) {
  // Steps are single-precision numbers, so that is how they are written.
  return attribute.GetKind() == Attribute::Kind::kNumber ? Format(static_cast<float>(attribute.GetStep())) : "";
}

std::string DescribeDecimals(const Attribute& attribute) {
  return attribute.GetKind() == Attribute::Kind::kNumber ? std::to_string(attribute.GetDecimals()) : "";
}

/// The icon's file, from the folder of the pages; resource paths start with ":/".
std::string GetIconFile(const std::string& resource) { return "../.." + resource.substr(1); }

const std::string& FindEntry(const NodeText::Entries& entries, const std::string& name) {
  const auto entry = std::find_if(entries.begin(), entries.end(), [&](const auto& each) { return each.first == name; });
  static const std::string none;
  return entry == entries.end() ? none : entry->second;
}

class PageWriter {
 public:
  explicit PageWriter(const NodePage& page) : page_(page), node_(*page.node), text_(page.text) {}

  std::string Write() {
    WriteTop();
    WriteAttributes();
    WritePlugs();
    out_ << "## What surprises\n\n" << text_.surprises << "\n\n";
    out_ << "## Try it\n\n";
    out_ << "In the root of the repository, after `mkdir -p out`:\n\n" << text_.trial << "\n\n";
    const std::string example = page_.GetExampleFile();
    out_ << "The pictures above are the outputs of [" << example << "](../../" << example
         << "), which runs as it stands:\n\n";
    out_ << "```sh\nbuild/release/bin/value run " << example << "\n```\n\n";
    WriteFacts();
    return out_.str();
  }

 private:
  void WriteTop() {
    out_ << "<!-- Written by value-pages from " << page_.GetTextFile() << " and the node itself; "
         << "Docs/Nodes/make_pages renews it. -->\n\n";
    out_ << "# ![](" << GetIconFile(page_.descriptor->GetIconPath()) << ") " << page_.descriptor->GetName() << "\n\n";
    out_ << page_.GetRecord().sentence << "\n\n";
    // More than three pictures do not fit beside each other on a page; four make two rows of two.
    const std::size_t in_a_row = text_.pictures.size() == 4 ? 2 : 3;
    for (std::size_t from = 0; from < text_.pictures.size(); from += in_a_row) {
      const std::size_t end = std::min(from + in_a_row, text_.pictures.size());
      std::string captions = "|";
      std::string rule = "|";
      std::string pictures = "|";
      std::string looks = "|";
      for (std::size_t i = from; i < end; ++i) {
        const PictureText& picture = text_.pictures[i];
        captions += " " + picture.caption + " |";
        rule += ":---:|";
        pictures += " ![" + picture.caption + "](" + page_.GetPictureFile(picture) + ") |";
        looks += " " + DescribeLook(picture.look) + " |";
      }
      out_ << captions << "\n" << rule << "\n" << pictures << "\n" << looks << "\n\n";
    }
    out_ << "## What it is for\n\n" << text_.use << "\n\n";
  }

  void WriteAttributes() {
    out_ << "## Attributes\n\n";
    if (node_.GetNumAttributes() == 0) {
      out_ << "None.\n\n";
      return;
    }
    out_ << "| Attribute | Kind | Default | Values | Unit | Step | Decimals |\n|---|---|---|---|---|---|---|\n";
    for (std::size_t i = 0; i < node_.GetNumAttributes(); ++i) {
      const Attribute& attribute = *node_.GetAttribute(i);
      out_ << "| `" << attribute.GetName() << "` | " << attribute.GetKindName() << " | " << DescribeDefault(attribute)
           << " | " << DescribeValues(attribute) << " | " << attribute.GetRow()->unit << " | "
           << DescribeStep(attribute) << " | " << DescribeDecimals(attribute) << " |\n";
    }
    out_ << "\n";
    for (std::size_t i = 0; i < node_.GetNumAttributes(); ++i) {
      const Attribute& attribute = *node_.GetAttribute(i);
      const std::string& more = FindEntry(text_.attributes, attribute.GetName());
      out_ << "### " << attribute.GetName() << "\n\n" << attribute.GetRow()->text << "\n";
      out_ << more << (more.empty() ? "\n" : "\n\n");
    }
  }

  void WritePlugs() {
    out_ << "## Inputs and outputs\n\n| Plug | Carries | |\n|---|---|---|\n";
    for (std::size_t i = 0; i < node_.GetNumRegularInputs(); ++i) {
      const PlugRecord& plug = node_.GetInplugs()[i];
      const bool many = plug.connections == PlugRecord::kAnyNumber;
      out_ << "| input `" << plug.name << "` | " << PlugType::GetName(plug.type)
           << (many ? ", any number of connections" : "") << " | " << InOneLine(FindEntry(text_.inputs, plug.name))
           << " |\n";
    }
    for (unsigned i = 0; i < node_.GetOutplugs().size(); ++i) {
      const PlugRecord& plug = node_.GetOutplugs()[i];
      const std::string alias = node_.GetOutplugAlias(i);
      out_ << "| output `" << plug.name << "`" << (alias == plug.name ? "" : ", shown as `" + alias + "`") << " | "
           << PlugType::GetName(plug.type) << " | " << InOneLine(FindEntry(text_.outputs, plug.name)) << " |\n";
    }
    out_ << "\nEvery attribute is an input too: a number, flag or text node can feed it.\n\n";
    out_ << "Disabled: " << text_.disabled << "\n\n";
  }

  void WriteFacts() {
    out_ << "## In documents\n\n| | |\n|---|---|\n";
    out_ << "| Class | `" << page_.GetClass() << "` |\n";
    const auto numbers = page_.descriptor->GetNodeType().GetNumbers();
    out_ << "| Numbers | " << numbers[0] << ", " << numbers[1] << ", " << numbers[2] << " |\n";
    out_ << "| Library | " << page_.descriptor->GetLibraryName() << " |\n";
    out_ << "| Attribute version | " << node_.GetAttributeVersion() << " |\n";
    std::string names;
    for (const auto& [old_name, current] : text_.old_names) {
      names += (names.empty() ? "" : ", ") + Code(old_name) + " for " + Code(current);
    }
    if (!names.empty()) out_ << "| Old names that are read | " << names << " |\n";
    std::string gone;
    for (const std::string& name : text_.gone_names) gone += (gone.empty() ? "" : ", ") + Code(name);
    if (!gone.empty()) out_ << "| Attributes of old documents that are ignored | " << gone << " |\n";
    out_ << "\n[All nodes](README.md)\n";
  }

  /// A cell of a table has no line breaks.
  static std::string InOneLine(std::string text) {
    std::replace(text.begin(), text.end(), '\n', ' ');
    return text;
  }

  const NodePage& page_;
  const Node& node_;
  const NodeText& text_;
  std::ostringstream out_;
};

std::string ResolveLinks(const std::string& text, const std::function<std::string(const std::string&)>& get_name,
                         std::vector<std::string>& unknown) {
  std::string result;
  std::size_t from = 0;
  for (std::size_t open = text.find("{Image"); open != std::string::npos; open = text.find("{Image", from)) {
    const std::size_t close = text.find('}', open);
    if (close == std::string::npos) break;
    const std::string class_name = text.substr(open + 1, close - open - 1);
    const std::string name = get_name(class_name);
    if (name.empty()) unknown.push_back(class_name);
    result += text.substr(from, open - from) + "[" + name + "](" + class_name + ".md)";
    from = close + 1;
  }
  return result + text.substr(from);
}

}  // namespace

std::string NodePage::GetPictureFile(const PictureText& picture) const {
  const std::size_t dot = picture.source.rfind('.');
  const std::string id = picture.source.substr(0, dot);
  const std::string plug = dot == std::string::npos ? "" : picture.source.substr(dot + 1);
  return "Images/" + GetClass() + "-" + id + (plug == "image" ? "" : "-" + plug) + ".png";
}

std::string WritePage(const NodePage& page, const std::function<std::string(const std::string&)>& get_name,
                      std::vector<std::string>& unknown) {
  return ResolveLinks(PageWriter(page).Write(), get_name, unknown);
}

std::string WriteIndex(const std::vector<NodePage>& pages) {
  std::vector<std::string> groups;
  for (const NodePage& page : pages) {
    const std::string group = page.GetRecord().group;
    if (std::find(groups.begin(), groups.end(), group) == groups.end()) groups.push_back(group);
  }
  std::ostringstream out;
  out << "<!-- Written by value-pages; Docs/Nodes/make_pages renews it. -->\n\n";
  out << "# The nodes\n\n";
  out << "One page per node: what it is for, a picture before and after, each attribute, and what surprises. The\n"
         "pictures are made by graphs that run as they stand. How to write graphs is in "
         "[GraphDocuments.md](../GraphDocuments.md); larger graphs are in [Examples.md](../Examples.md).\n";
  for (const std::string& group : groups) {
    out << "\n## " << group << "\n\n| | Node | What it does |\n|---|---|---|\n";
    for (const NodePage& page : pages) {
      if (page.GetRecord().group != group) continue;
      out << "| ![](" << GetIconFile(page.descriptor->GetIconPath()) << ") | [" << page.descriptor->GetName() << "]("
          << page.GetClass() << ".md) | " << page.GetRecord().sentence << " |\n";
    }
  }
  out << "\n## How these pages are made\n\n"
         "A program, `value-pages`, writes them. Names, numbers, sentences, plugs, attributes, defaults and ranges "
         "come from\n"
         "the nodes themselves, the rest from the text beside each node, and the pictures from a run of the graph "
         "beside\n"
         "it. After a change of a node, a text or a graph, this renews pages and pictures:\n\n"
         "```sh\nDocs/Nodes/make_pages\n```\n\n"
         "The test `NodePages` fails while a page or a picture is stale, and for a node without a page.\n";
  return out.str();
}
