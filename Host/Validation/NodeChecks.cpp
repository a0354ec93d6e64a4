// SPDX-License-Identifier: Apache-2.0
//
// Checks of a node type that evaluate nothing: its icons, its factory, and what its nodes declare.
#include <algorithm>
#include <cmath>
#include <filesystem>
#include <set>
#include <string>

#include "Host/Tools/Attribute.h"
#include "Host/Tools/Node.h"
#include "Host/Util/HostModule.h"
#include "Host/Validation/Checks.h"
#include "Host/Validation/Resources/ResourceReader.h"
#include "Host/Validation/Trial.h"

namespace ScEng {
namespace {

constexpr int kLargeIcon = 48;
constexpr int kSmallIcon = 12;

std::string InQuotes(const std::string& text) { return "\"" + text + "\""; }

/// The reader of Qt resources; null where it cannot be loaded.
decltype(&HostReadPicture) LoadReader() {
  return HostModule("HostResources", "the reader of Qt resources").Load<decltype(&HostReadPicture)>("HostReadPicture");
}

void CheckIcon(Subject& subject, const std::string& path, const char* which, int wanted) {
  static const auto read_picture = LoadReader();
  if (read_picture == nullptr) {
    subject.Skip("the host's reader of Qt resources cannot be loaded");
    return;
  }
  const std::string icon = std::string(which) + " icon " + InQuotes(path);
  if (path.rfind(":/", 0) != 0) {
    subject.Fail(icon +
                 " is no Qt resource path; icons are compiled into the library, under a path that starts with :/");
    return;
  }
  int width = 0;
  int height = 0;
  switch (read_picture(path.c_str(), &width, &height)) {
    case PictureResult::kNoSuchResource:
      subject.Fail(icon + " does not resolve; it has to name a resource that the library registers when it is loaded");
      return;
    case PictureResult::kNoPicture:
      subject.Fail(icon + " cannot be decoded; it has to be a picture, such as a PNG");
      return;
    case PictureResult::kDecoded: break;
  }
  if (width != wanted || height != wanted) {
    subject.Fail(icon + " is " + std::to_string(width) + " x " + std::to_string(height) + " pixels; it has to be " +
                 std::to_string(wanted) + " x " + std::to_string(wanted));
  }
}

bool IsKnownType(unsigned type) {
  return type == PlugType::kImage || (type >= PlugType::kFlag && type <= PlugType::kFrame);
}

void CheckNumber(Subject& subject, const Attribute& attribute, const std::string& which) {
  const double value = attribute.GetDefault().GetNumber();
  const double low = attribute.GetLowest();
  const double high = attribute.GetHighest();
  const std::string bounds = Describe(PlugValue(low)) + " to " + Describe(PlugValue(high));
  if (std::isnan(low) || std::isnan(high) || low > high) {
    subject.Fail(which + " has the bounds " + bounds + "; the lowest value comes first and is not above the highest");
  } else if (!(value >= low && value <= high)) {
    subject.Fail(which + " has the default " + Describe(PlugValue(value)) + ", which is outside its bounds " + bounds);
  }
  if (!(attribute.GetStep() > 0.0) || !std::isfinite(attribute.GetStep())) {
    subject.Fail(which + " has the step " + Describe(PlugValue(attribute.GetStep())) + "; a step is above 0");
  }
  if (attribute.GetDecimals() < 0 || attribute.GetDecimals() > 17) {
    subject.Fail(which + " shows " + std::to_string(attribute.GetDecimals()) + " decimals; 0 to 17 make sense");
  }
}

void CheckChoice(Subject& subject, const Attribute& attribute, const std::string& which) {
  std::set<std::string> words;
  for (const std::string& word : attribute.GetChoices()) {
    if (word.empty()) subject.Fail(which + " has an empty word in its list; every choice needs a word");
    if (!words.insert(word).second) subject.Fail(which + " has the word " + InQuotes(word) + " twice in its list");
  }
  if (attribute.GetChoiceIndex(attribute.GetDefault().GetText()) < 0) {
    subject.Fail(which +
                 " has a default that is not in its list; the index of the default is from 0 to one below the " +
                 std::to_string(words.size()) + " words");
  }
}

void CheckAttribute(Subject& subject, const Node& node, std::size_t id) {
  const Attribute& attribute = *node.GetAttribute(id);
  const std::string& name = attribute.GetName();
  const std::string which = "attribute " + InQuotes(name);
  if (attribute.GetId() != id) {
    subject.Fail(which + " has the id " + std::to_string(attribute.GetId()) + " at place " + std::to_string(id) +
                 "; the id is the place in the list");
  }
  if (attribute.GetRefCount() != 1) {
    subject.Fail(which + " has " + std::to_string(attribute.GetRefCount()) +
                 " references; its node holds the only one");
  }
  if (attribute.GetKind() == Attribute::Kind::kNumber) CheckNumber(subject, attribute, which);
  if (attribute.GetKind() == Attribute::Kind::kChoice) CheckChoice(subject, attribute, which);
  for (const unsigned version : {0U, node.GetAttributeVersion()}) {
    const std::string translated = node.TranslateAttributeName(version, name);
    if (translated != name) {
      subject.Fail(which + " is translated to " + InQuotes(translated) + "; a name of today stays as it is");
      break;
    }
  }
  if (node.IsObsoleteAttribute(node.GetAttributeVersion(), name.c_str())) {
    subject.Fail(which + " is said to be obsolete although the node has it");
  }
}

/// Documents and the command line write "node.plug" and "attribute=value".
void CheckPlainName(Subject& subject, const std::string& name, const std::string& which) {
  const std::string problem = name.empty() ? std::string() : FindNameProblem(name);
  if (!problem.empty()) subject.Fail("the name of " + which + " " + problem + "; give it a plain word");
  if (name.find_first_of(".=") == std::string::npos) return;
  subject.Fail("the name of " + which + ", " + InQuotes(name) +
               ", holds a point or an equals sign, which separate names from plugs and values");
}

void CheckPlug(Subject& subject, const PlugRecord& plug, const std::string& which, std::set<std::string>& names) {
  if (plug.name.empty()) subject.Fail(which + " has no name; connections are stored by plug names");
  CheckPlainName(subject, plug.name, which);
  if (!plug.name.empty() && !names.insert(plug.name).second) {
    subject.Fail(which + " has the name " + InQuotes(plug.name) + ", which another one has as well");
  }
  if (!IsKnownType(plug.type)) {
    subject.Fail(which + " has the type code " + std::to_string(plug.type) +
                 ", which the host does not know; an image plug has 8, the others 1 to 6");
  }
}

}  // namespace

void CheckIcons(Subject& subject) {
  const NodeInterface* descriptor = subject.GetDescriptor();
  if (descriptor == nullptr) return;
  subject.At("asking for the icons");
  const std::string large = descriptor->GetIconPath();
  const std::string small = descriptor->GetSmallIconPath();
  // A type may do without icons; hosts then show one of their own.
  if (large.empty() && small.empty()) return;
  if (large.empty() || small.empty()) {
    subject.Fail(std::string("there is only a ") + (small.empty() ? "large" : "small") +
                 " icon; a node type has both, or neither");
    return;
  }
  CheckIcon(subject, large, "large", kLargeIcon);
  CheckIcon(subject, small, "small", kSmallIcon);
}

void CheckFactory(Subject& subject) {
  const NodeInterface* descriptor = subject.GetDescriptor();
  if (descriptor == nullptr) return;
  const NodeFactory* factory = descriptor->GetNodeFactory();
  const NodeType type = descriptor->GetNodeType();
  if (factory->GetNodeType() != type) {
    subject.Fail("the descriptor has the numbers " + type.ToString() + " and its factory " +
                 factory->GetNodeType().ToString() + "; they have to be the same");
  }
  subject.At("making two nodes");
  const RefPtr<Node> first(factory->CreateNode());
  if (!first) {
    subject.Fail("CreateNode answers null; it has to answer a new node at each call");
    return;
  }
  if (first->GetRefCount() != 1) {
    subject.Fail("a new node has " + std::to_string(first->GetRefCount() - 1) +
                 " references; it has none, and the host takes the first");
    return;
  }
  Node* const again = factory->CreateNode();
  if (again == first.Get()) {
    subject.Fail("CreateNode answers the same node twice; it has to answer a new one at each call");
    return;
  }
  const RefPtr<Node> second(again);
  if (first->GetNodeType() != type) {
    subject.Fail("the factory makes nodes of type " + first->GetNodeType().ToString() + ", but its descriptor says " +
                 type.ToString() + "; they have to be the same");
  }
  if (first->GetName() != descriptor->GetName()) {
    subject.Fail("the factory makes nodes with the display name " + InQuotes(first->GetName()) +
                 ", but its descriptor says " + InQuotes(descriptor->GetName()) + "; they have to be the same");
  }
  if (!first->IsEnabled()) subject.Fail("a new node is disabled; it starts enabled");
}

void CheckAttributes(Subject& subject) {
  const RefPtr<Node> node = subject.MakeNode();
  if (!node) return;
  subject.At("reading the attributes");
  std::set<std::string> names;
  for (std::size_t id = 0; id < node->GetNumAttributes(); ++id) {
    const Attribute* attribute = node->GetAttribute(id);
    if (attribute == nullptr) {
      subject.Fail("attribute " + std::to_string(id) + " is null; every place of the list holds an attribute");
      continue;
    }
    if (attribute->GetName().empty()) {
      subject.Fail("attribute " + std::to_string(id) + " has no name; documents store attributes by their names");
    } else if (!names.insert(attribute->GetName()).second) {
      subject.Fail("attribute " + InQuotes(attribute->GetName()) + " is there twice; each needs its own name");
    }
    CheckAttribute(subject, *node, id);
  }
}

void CheckPlugs(Subject& subject) {
  const RefPtr<Node> node = subject.MakeNode();
  if (!node) return;
  subject.At("reading the plugs");
  const std::vector<PlugRecord>& inplugs = node->GetInplugs();
  const std::vector<PlugRecord>& outplugs = node->GetOutplugs();
  const std::size_t regular = node->GetNumRegularInputs();
  if (inplugs.size() != regular + node->GetNumAttributes()) {
    subject.Fail("there are " + std::to_string(inplugs.size()) + " input plugs for " + std::to_string(regular) +
                 " inputs and " + std::to_string(node->GetNumAttributes()) +
                 " attributes; the last call of a node's constructor has to be UpdateInplugsAndOutplugs");
    return;
  }
  std::set<std::string> names;
  for (std::size_t i = 0; i < inplugs.size(); ++i) {
    const std::string which = "input " + std::to_string(i);
    CheckPlug(subject, inplugs[i], which, names);
    const std::uint32_t connections = inplugs[i].connections;
    if (connections != 1 && connections != PlugRecord::kAnyNumber) {
      subject.Fail(which + " takes " + std::to_string(connections) + " connections; it takes one or any number");
    }
    if (i < regular) continue;
    const Attribute* attribute = node->GetAttribute(i - regular);
    if (attribute == nullptr) continue;
    if (inplugs[i].name != attribute->GetName() || inplugs[i].type != attribute->GetPlugType()) {
      subject.Fail(which + " is " + InQuotes(inplugs[i].name) + " and not the plug of attribute " +
                   InQuotes(attribute->GetName()) + "; every attribute is an input plug as well, in the same order");
    }
  }
  names.clear();
  for (std::size_t i = 0; i < outplugs.size(); ++i) {
    CheckPlug(subject, outplugs[i], "output " + std::to_string(i), names);
  }
  if (outplugs.empty() && !node->IsSink()) {
    subject.Fail(
        "there is no output; a node has at least one, unless it says by IsSink that it acts on something else");
  }

  subject.At("asking how an editor shows the plugs");
  // One index further than there are plugs: a node answers for any index.
  for (unsigned i = 0; i <= inplugs.size(); ++i) {
    static_cast<void>(node->GetInplugAlias(i));
    static_cast<void>(node->GetInplugVisibility(i));
    for (unsigned output = 0; output <= outplugs.size(); ++output) {
      static_cast<void>(node->InplugAffectsOutplug(i, output));
    }
  }
  for (unsigned i = 0; i <= outplugs.size(); ++i) {
    static_cast<void>(node->GetOutplugAlias(i));
    static_cast<void>(node->GetOutplugVisibility(i));
  }
}

}  // namespace ScEng
