// SPDX-License-Identifier: Apache-2.0
#include "Host/Tools/NodeInterface.h"

#include "Host/Tools/LibraryInterface.h"

NodeInterface::~NodeInterface() = default;
unsigned NodeInterface::GetGroupCode() const { return 0; }
bool NodeInterface::RunTest() { return false; }
void NodeInterface::InterfaceHook1() {}
void NodeInterface::InterfaceHook2() {}
QWidget* NodeInterface::CreateAttributesWidget(Node*, QWidget*, std::uintptr_t) { return nullptr; }
void NodeInterface::InterfaceHook3() {}
void NodeInterface::InterfaceHook4() {}
std::string NodeInterface::GetLibraryName() const { return {}; }
unsigned NodeInterface::GetExtraCode() const { return 0; }
std::string NodeInterface::GetIconPath() const { return {}; }
std::string NodeInterface::GetSmallIconPath() const { return {}; }
std::string NodeInterface::GetDefaultMode() const { return "as_is"; }
void NodeInterface::InterfaceHook5() {}
void NodeInterface::InterfaceHook6() {}
void NodeInterface::InterfaceHook7() {}
void NodeInterface::InterfaceHook8() {}
void NodeInterface::InterfaceHook9() {}
void NodeInterface::InterfaceHook10() {}
void NodeInterface::InterfaceHook11() {}
void NodeInterface::InterfaceHook12() {}

std::string LibraryInterface::GetSecondaryText() const { return {}; }
void LibraryInterface::LibraryHook1() {}
void LibraryInterface::LibraryHook2() {}
void LibraryInterface::LibraryHook3() {}
