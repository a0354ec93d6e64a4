// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

#include "Apps/Value/Reporter.h"

/// What the completion scripts of the shells ask. The answer is made from the program's own options, its catalogue of
/// nodes and the document that was typed; it has a line for each thing that the last word may become, its fields
/// separated by tabs:
///
///   quote MARK             the quotation mark that is open at the cursor, for bash
///   word TEXT [ABOUT]      a whole word
///   part TEXT [ABOUT]      the start of a word: no blank follows
///   prefix TEXT            what stands before the file in the word that is typed
///   file ENDING [START]    files with that ending ("*" for any), to be completed by the shell
///   folder * [START]       folders alike
///
/// What is wrong with a document or a node library makes the answer empty: nobody wants an error while typing.
///
/// `arguments` are those behind "complete": either "--" and the words behind the program's name, without quotes, or
/// "--bash LINE BREAKS", the line up to the cursor and COMP_WORDBREAKS. For bash, which does not quote itself, words
/// are quoted and without what bash does not replace, and START is the start of the file's name.
ExitCode Complete(const CLI::App& app, const std::vector<std::string>& arguments, Reporter& reporter);
