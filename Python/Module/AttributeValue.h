// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <pybind11/pybind11.h>

#include <string>

#include "Host/Tools/Attribute.h"
#include "Host/Tools/Node.h"
#include "Python/Module/Errors.h"

namespace ValuePython {

/// Sets an attribute from an object of Python. Throws TypeError for a value of another kind, ValueError for a number
/// out of bounds or a word that is none of the choice; `function` is what the message calls the node.
void SetAttribute(Attribute& attribute, pybind11::handle value, const std::string& function);

/// The file that a node which could not read or write one names by its own attribute; none where its message is of
/// another one, as where the path comes from a connection.
FailedFile FindFile(const Node& node);

/// What a plug carries, as an object of Python; None for nothing and for an image.
pybind11::object ToPython(const PlugValue& value);

/// Whether an object stands for one number: int, float, a scalar of numpy or an array without dimensions.
bool IsNumber(pybind11::handle object);

/// That number, infinite where it is beyond what a double holds.
double ToDouble(pybind11::handle object);

/// "float" for 0.5: the type of an object for messages.
std::string NameType(pybind11::handle object);

}  // namespace ValuePython
