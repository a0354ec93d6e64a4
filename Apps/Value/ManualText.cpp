// SPDX-License-Identifier: Apache-2.0
#include "Apps/Value/ManualText.h"

#include <vector>

namespace {

constexpr ManualEntry kExitCodes[] = {
    {"0", "Done. Notes and warnings change nothing about it, nor does a reader that closes the pipe of the answer."},
    {"1", "A node reported an error, or a check failed."},
    {"2", "Wrong usage: an option, a node, an attribute or a plug that does not exist. The message names the nearest."},
    {"3", "The document is invalid."},
    {"4", "A file could not be read or written. This outranks the error of a node; the other files are still written."},
    {"5", "A node library could not be loaded."},
    {"130, 143", "Ended by SIGINT or SIGTERM. What was written stays, and nothing is left half-written."},
};

constexpr ManualEntry kEnvironment[] = {
    {"VALUE_DEVICE",
     "The OpenCL device to compute on where `--device` does not say: its place in value doctor, a word of "
     "its name, gpu or cpu."},
    {"VALUE_PLUGIN_PATH",
     "Folders, separated by colons. The node libraries in them are loaded beside the program's own."},
    {"VALUE_LOG", "info has the program report more of what it does."},
    {"XDG_CACHE_HOME", "The folder of caches, $HOME/.cache where it is not set."},
    {"POCL_CACHE_DIR",
     "Where the OpenCL driver of the processor keeps what it has compiled; by default pocl/kcache in "
     "the folder of caches."},
    {"DISPLAY, WAYLAND_DISPLAY, QT_QPA_PLATFORM", "Where value edit and value panel open their windows."},
    {"XDG_STATE_HOME",
     "The folder of what programs keep, $HOME/.local/state where it is not set. value edit keeps the journals of "
     "documents there that have no file yet."},
};

constexpr ManualEntry kFiles[] = {
    {"Value.so",
     "The node library that the program loads unasked: beside the program, or in lib/value of an "
     "installation."},
    {"share/value/graph.schema.json", "The JSON schema of graph documents, for editors."},
    {"share/value/selftest", "The images that the self-tests read."},
    {"libexec/value/value-decoder",
     "The program in which image files are decoded, without the rights of the one that "
     "asked for them."},
    {"libexec/value/value-examiner",
     "The program in which the Python package examines node libraries before it loads them."},
};

struct CommandText {
  std::string_view command;
  std::string_view synopsis;
  std::vector<const char*> paragraphs;
};

const std::vector<CommandText>& GetTexts() {
  static const std::vector<CommandText> texts = {
      {"",
       "COMMAND [OPTION]... [ARGUMENT]...",
       {"value applies image nodes to files. A node reads the samples of images as values: height, intensity, strength "
        "of a mask. One node is applied by value apply; a graph of nodes is a JSON document, which value run "
        "evaluates.",
        "Samples are floats, and nothing is cut at 0 or 1: those are only the usual range that an image declares. What "
        "the nodes do is listed by value nodes.",
        "Files are written beside their place and renamed when they are whole, so that nothing half-written is left "
        "behind. Every error is one line on standard error that names the file, node or attribute that it is about. "
        "With `--json` the answer on standard output is JSON, errors included."}},
      {"nodes",
       "",
       {"Without a name, lists all nodes with a sentence each. With the name of one, lists its plugs and its "
        "attributes "
        "with their bounds, defaults and words.",
        "A node may be written by its display name (\"Value Add\"), by its class (ImageValueAddNode) or by its three "
        "numbers (10,320,5), in any case of letters."}},
      {"apply",
       "NODE [-i FILE]... [-i PLUG=FILE]... [--set NAME=VALUE]... -o FILE [-o PLUG=FILE]... [OPTION]...",
       {"Reads the files, applies the node to them and writes what it gives. Files go to the inputs of the node in "
        "their "
        "order; a plug is named where the order does not say. Nodes that make images take no files.",
        "`--set` takes a number, true or false, a word of a choice, a text, or the numbers of a point, frame or colour "
        "separated by commas. Numbers beyond the bounds of an attribute are cut to them, with a note.",
        "The format of a file follows from its ending, the type of its samples from `--type`, else from the format."}},
      {"run",
       "",
       {"Evaluates what the outputs and the enabled writers of a document need, and writes their files. Relative paths "
        "in the document start from its folder, those on the command line from the working directory.",
        "With `--each` the document is run once for each file that the pattern matches, with the path of the named "
        "reader replaced, and the results go to `--output-dir`. A file that fails is reported, and the rest go on.",
        "Quote the pattern, so that the program matches it and not the shell."}},
      {"check",
       "",
       {"Reads a document and lists all that is wrong with it, one line for each problem, without evaluating "
        "anything."}},
      {"stats",
       "",
       {"Prints the size of an image, its mode, its declared and its measured range, mean and deviation, how many "
        "samples "
        "are NaN or infinite, a histogram, and what the file says of itself. Range, mean, deviation and histogram are "
        "those of the finite samples."}},
      {"selftest",
       "",
       {"Renders the cases of the self-tests that node types carry. With `--reference` each case is also compared with "
        "the stored image of the same name: size and mode must agree, samples may differ by 0.005 on average and by "
        "0.01 "
        "at most."}},
      {"doctor",
       "",
       {"Shows versions, the processor, OpenCL devices, the formats of files and the node libraries, and what is wrong "
        "with any of them."}},
      {"validate",
       "",
       {"Loads a node library in a process of its own and checks what a host relies on: its catalogue, its nodes on "
        "images of many kinds, its memory, its behaviour in several threads."}},
      {"panel",
       "NODE [-i FILE]... [-i PLUG=FILE]... [--set NAME=VALUE]... [OPTION]...",
       {"Opens a window with the attributes of a node and a preview that follows them. With `--screenshot` the window "
        "is "
        "drawn to a file instead, which needs no display."}},
      {"edit",
       "[GRAPH] [OPTION]...",
       {"Opens the editor: nodes on a canvas, the image of any of them in a viewer, their attributes in a panel, "
        "evaluated in the background after every change. A journal keeps what was not saved; the next start offers it.",
        "With `--screenshot` the window is drawn to a file instead when everything in it is computed, which needs no "
        "display."}},
  };
  return texts;
}

const CommandText* FindText(std::string_view command) {
  for (const CommandText& text : GetTexts()) {
    if (text.command == command) return &text;
  }
  return nullptr;
}

}  // namespace

std::span<const ManualEntry> GetExitCodes() { return kExitCodes; }

std::span<const ManualEntry> GetEnvironment() { return kEnvironment; }

std::span<const ManualEntry> GetFiles() { return kFiles; }

std::span<const char* const> GetManualText(std::string_view command) {
  const CommandText* text = FindText(command);
  if (text == nullptr) return {};
  return text->paragraphs;
}

std::string_view GetSynopsis(std::string_view command) {
  const CommandText* text = FindText(command);
  return text == nullptr ? std::string_view() : text->synopsis;
}
