// SPDX-License-Identifier: Apache-2.0
#include "Apps/Editor/Docks/HistoryNames.h"

#include <QCoreApplication>
#include <QStringList>
#include <optional>

namespace {

/// What a command of an editing session is called, and what it is called here. Each %1, %2, %3 stands for any text, %n
/// for a number.
struct Step {
  const char* name;
  const char* shown;
};

// Those that say more come before those that would take the same text for a name. Words are those of the menus.
constexpr Step kSteps[] = {
    {"Add output %1 to %2", QT_TRANSLATE_NOOP("HistoryNames", "Add output %1 to %2")},
    {"Change output %1 to %2", QT_TRANSLATE_NOOP("HistoryNames", "Change output %1 to %2")},
    {"Remove output %1 to %2", QT_TRANSLATE_NOOP("HistoryNames", "Remove output %1 to %2")},
    {"Add frame \"%1\"", QT_TRANSLATE_NOOP("HistoryNames", "Add frame \"%1\"")},
    {"Change frame \"%1\"", QT_TRANSLATE_NOOP("HistoryNames", "Change frame \"%1\"")},
    {"Remove frame \"%1\"", QT_TRANSLATE_NOOP("HistoryNames", "Delete frame \"%1\"")},
    {"Add frame", QT_TRANSLATE_NOOP("HistoryNames", "Add frame")},
    {"Change frame", QT_TRANSLATE_NOOP("HistoryNames", "Change frame")},
    {"Remove frame", QT_TRANSLATE_NOOP("HistoryNames", "Delete frame")},
    {"Add %1", QT_TRANSLATE_NOOP("HistoryNames", "Add %1")},
    {"Remove %n nodes and heal", QT_TRANSLATE_NOOP("HistoryNames", "Delete %n nodes and reconnect")},
    {"Remove %1 and heal", QT_TRANSLATE_NOOP("HistoryNames", "Delete %1 and reconnect")},
    {"Remove %n nodes", QT_TRANSLATE_NOOP("HistoryNames", "Delete %n nodes")},
    {"Remove %1", QT_TRANSLATE_NOOP("HistoryNames", "Delete %1")},
    {"Rename %1 to %2", QT_TRANSLATE_NOOP("HistoryNames", "Rename %1 to %2")},
    {"Enable %n nodes", QT_TRANSLATE_NOOP("HistoryNames", "Unmute %n nodes")},
    {"Enable %1", QT_TRANSLATE_NOOP("HistoryNames", "Unmute %1")},
    {"Disable %n nodes", QT_TRANSLATE_NOOP("HistoryNames", "Mute %n nodes")},
    {"Disable %1", QT_TRANSLATE_NOOP("HistoryNames", "Mute %1")},
    {"Edit note of %1", QT_TRANSLATE_NOOP("HistoryNames", "Edit note of %1")},
    {"Reorder %1", QT_TRANSLATE_NOOP("HistoryNames", "Reorder %1")},
    {"Move %n nodes", QT_TRANSLATE_NOOP("HistoryNames", "Move %n nodes")},
    {"Move %1", QT_TRANSLATE_NOOP("HistoryNames", "Move %1")},
    {"Connect %1 to %2", QT_TRANSLATE_NOOP("HistoryNames", "Connect %1 to %2")},
    {"Disconnect %1 from %2", QT_TRANSLATE_NOOP("HistoryNames", "Disconnect %1 from %2")},
    {"Set attributes of %1", QT_TRANSLATE_NOOP("HistoryNames", "Set attributes of %1")},
    {"Set %n attributes", QT_TRANSLATE_NOOP("HistoryNames", "Set %n attributes")},
    {"Set %1", QT_TRANSLATE_NOOP("HistoryNames", "Set %1")},
    {"Insert %1 between %2 and %3", QT_TRANSLATE_NOOP("HistoryNames", "Insert %1 between %2 and %3")},
    {"Paste %n nodes", QT_TRANSLATE_NOOP("HistoryNames", "Paste %n nodes")},
    {"Paste %1", QT_TRANSLATE_NOOP("HistoryNames", "Paste %1")},
    {"Duplicate %n nodes", QT_TRANSLATE_NOOP("HistoryNames", "Duplicate %n nodes")},
    {"Duplicate %1", QT_TRANSLATE_NOOP("HistoryNames", "Duplicate %1")},
};

bool IsNumber(const QString& text) {
  bool is_number = false;
  static_cast<void>(text.toUInt(&is_number));
  return is_number;
}

/// What stands in a text at the places of a pattern, in their order; nothing where the text is not of the pattern.
std::optional<QStringList> Match(const QString& text, const QString& pattern) {
  QStringList parts;
  qsizetype place = pattern.indexOf(u'%');
  if (!text.startsWith(pattern.left(place < 0 ? pattern.size() : place))) return std::nullopt;
  if (place < 0) return text == pattern ? std::make_optional(parts) : std::nullopt;
  qsizetype from = place;
  while (place >= 0) {
    const bool is_number = pattern[place + 1] == u'n';
    const qsizetype next = pattern.indexOf(u'%', place + 2);
    const QString between = pattern.mid(place + 2, next < 0 ? -1 : next - place - 2);
    qsizetype end = text.size() - between.size();
    if (next >= 0) end = text.indexOf(between, from);
    if (end < from || text.mid(end, between.size()) != between) return std::nullopt;
    const QString part = text.mid(from, end - from);
    if (part.isEmpty() || (is_number && !IsNumber(part))) return std::nullopt;
    parts << part;
    from = end + between.size();
    place = next;
  }
  return parts;
}

/// Puts the parts where the pattern has their places, all at once: a part may hold a place's letters itself.
QString Fill(const QString& pattern, const QStringList& parts) {
  QString filled;
  for (qsizetype i = 0; i < pattern.size(); ++i) {
    const bool is_place = pattern[i] == u'%' && i + 1 < pattern.size();
    const QChar mark = is_place ? pattern[i + 1] : QChar();
    const qsizetype part = mark == u'n' ? 0 : mark.digitValue() - 1;
    if (!is_place || part < 0 || part >= parts.size()) {
      filled += pattern[i];
      continue;
    }
    filled += parts[part];
    ++i;
  }
  return filled;
}

}  // namespace

QString TranslateStep(const std::string& name) {
  const QString text = QString::fromStdString(name);
  for (const Step& step : kSteps) {
    const auto parts = Match(text, QString::fromLatin1(step.name));
    if (parts) return Fill(QCoreApplication::translate("HistoryNames", step.shown), *parts);
  }
  return text;
}
