// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <CLI/CLI.hpp>
#include <string>

/// Writes the help in the words of the manual: values by their names, without the types and checks behind them, and in
/// lines that fit a terminal of 80 columns.
class HelpFormatter : public CLI::Formatter {
 public:
  std::string make_usage(const CLI::App* app, std::string name) const override;
  std::string make_option(const CLI::Option* option, bool is_positional) const override;
  std::string make_subcommand(const CLI::App* command) const override;
};
