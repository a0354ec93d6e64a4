// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QString>
#include <string>
#include <vector>

#include "Host/Tools/Attribute.h"
#include "Host/Tools/Node.h"

/// A number with as few digits as tell it from every other.
QString ShowNumber(double number);

/// The value of an attribute as the command line takes it: "0.5", "true", "1,0.5,0,1".
QString ShowValue(const PlugValue& value);

/// A word that a POSIX shell reads as `text`.
QString QuoteForShell(const QString& text);

/// "--set name=value" for every attribute of a node that is not at its default and not fed by a connection; with an id,
/// "--set id.name=value". Relative paths become absolute ones, since the command line starts from another folder.
std::vector<QString> MakeSetOptions(const Node& node, const std::string& id = {});

/// "value apply TYPE -i FILE --set ... -o FILE": what the node does, as a command.
QString MakeApplyCommand(const Node& node, const std::string& type_name);
