#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Holds the translations of the editor against its sources.

    translations_test.py ROOT    checks the translations of a tree, and the texts in its sources
    translations_test.py         checks this script against examples
"""

import pathlib
import re
import subprocess
import sys
import tempfile
import xml.etree.ElementTree as ElementTree

LISTS = pathlib.Path("Apps/Editor/Translations")
SOURCES = ("Apps/Editor", "Apps/Panel", "Apps/Desktop", "Host/Widgets")
ADVICE = f"run {LISTS}/update-texts, translate what is unfinished in {LISTS}"

PLACEHOLDER = re.compile(r"%n|%L?\d+|\[\*\]")
MNEMONIC = re.compile(r"&(?=[^&\s])")
# What gives people a text, and begins with the text itself.
BARE_TEXT = re.compile(
    r"\b(?:setText|setToolTip|setStatusTip|setWindowTitle|setTitle|setAccessibleName|setAccessibleDescription|setSuffix|"
    r"setPlaceholderText|setSpecialValueText|setInformativeText|showMessage|addAction|addItem|addMenu|addRow|addTab|"
    r"new Q(?:Label|PushButton|CheckBox|RadioButton|GroupBox|Action|Menu|DockWidget))"
    r'\(\s*(?:QStringLiteral\(|QLatin1String\(|QString\()?"[^"]*[A-Za-z]{2}')
# A function that translates what it is given: the texts that it is given in quotes are not found by lupdate.
WRAPPER = re.compile(r"^QString (\w+)\(const char\* \w+\) \{ return QCoreApplication::translate\(", re.MULTILINE)


def read_texts(file):
    """The messages of a list: (context, text, comment) and the element of each."""
    texts = {}
    for context in ElementTree.parse(file).getroot().findall("context"):
        for message in context.findall("message"):
            texts[context.findtext("name"), message.findtext("source"), message.findtext("comment", "")] = message
    return texts


def faults_of_text(text, translated, is_plural):
    """What is wrong with one translation of a text."""
    wanted = sorted(PLACEHOLDER.findall(text))
    found = sorted(PLACEHOLDER.findall(translated))
    if is_plural and "%n" not in found:
        # "a file" may stand for "%n file".
        wanted = [placeholder for placeholder in wanted if placeholder != "%n"]
    if not translated.strip():
        yield "has no translation"
    elif found != wanted:
        yield f'has {", ".join(wanted) or "no placeholder"}, its translation {", ".join(found) or "none"}'
    elif len(MNEMONIC.findall(translated)) != len(MNEMONIC.findall(text)):
        yield "does not mark a letter where its translation does, or the other way round"
    elif [text[:1].isspace(), text[-1:].isspace()] != [translated[:1].isspace(), translated[-1:].isspace()]:
        yield "does not begin and end with spaces as its translation does"


def faults_of_message(message):
    translation = message.find("translation")
    if translation.get("type") is not None:
        yield f'is {translation.get("type")}'
        return
    forms = translation.findall("numerusform")
    if message.get("numerus") == "yes" and not forms:
        yield "has no forms for one and many"
    for form in forms or [translation]:
        yield from faults_of_text(message.findtext("source"), form.text or "", message.get("numerus") == "yes")


def faults_of_list(kept, fresh):
    """Faults of the list that is kept, given the list as the sources have it."""
    for key in fresh.keys() - kept.keys():
        yield key, "is not in the list"
    for key in kept.keys() - fresh.keys():
        yield key, "is in no source any more"
    for key in kept.keys() & fresh.keys():
        for fault in faults_of_message(kept[key]):
            yield key, fault


def faults_of_source(text):
    """Lines with a text that nobody can translate."""
    patterns = [BARE_TEXT] + [re.compile(rf'\b{name}\("') for name in WRAPPER.findall(text)]
    for pattern in patterns:
        for match in pattern.finditer(text):
            yield text.count("\n", 0, match.start()) + 1


def check_tree(root):
    faults = []
    lists = sorted((root / LISTS).glob("*.ts"))
    with tempfile.TemporaryDirectory() as folder:
        subprocess.run([str(root / LISTS / "update-texts"), folder], check=True, timeout=300)
        release = next((path for path in ("/usr/lib/qt6/bin/lrelease",) if pathlib.Path(path).exists()), "lrelease")
        for file in lists:
            fresh = pathlib.Path(folder) / file.name
            if not fresh.exists():
                faults.append(f"{file.name} is not among the languages of update-texts")
                continue
            found = sorted(faults_of_list(read_texts(file), read_texts(fresh)))
            faults += [f'{file.name}: {context}: "{text}" {fault}' for (context, text, _), fault in found]
            done = subprocess.run([release, "-silent", str(file), "-qm", f"{folder}/{file.stem}.qm"],
                                  stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, timeout=60)
            if done.returncode != 0:
                faults.append(f"{file.name}: lrelease refuses it: {done.stdout.strip()}")
    stray = []
    for source in sorted(path for folder in SOURCES for path in (root / folder).rglob("*.cpp")):
        if source.stem.endswith(("Test", "Bench")):
            continue
        stray += [f"{source.relative_to(root)}:{line}" for line in faults_of_source(source.read_text(encoding="utf-8"))]
    for fault in faults:
        print(fault)
    if faults:
        print(f"{len(faults)} texts are not translated: {ADVICE}")
    for place in stray:
        print(f"{place}: the text is not found by lupdate; give it in quotes to tr()")
    if not lists:
        print(f"no translations in {root / LISTS}")
    elif not faults and not stray:
        print("complete:", ", ".join(file.stem for file in lists))
    return 1 if faults or stray or not lists else 0


def make_message(source, translation, attributes=""):
    return ElementTree.fromstring(f"<message{attributes}><source>{source}</source>{translation}</message>")


def check_examples():
    plain = "<translation>{}</translation>".format
    plural = ' numerus="yes"'
    forms = "<translation><numerusform>{}</numerusform><numerusform>{}</numerusform></translation>".format
    good = [make_message("Save %1", plain("%1 speichern")), make_message("%1[*] - A", plain("A: %1[*]")),
            make_message("&amp;File", plain("&amp;Datei")), make_message("A &amp;&amp; B", plain("A &amp;&amp; B")),
            make_message(" or ", plain(" oder ")), make_message("%n nodes", forms("ein Knoten", "%n Knoten"), plural)]
    for message in good:
        assert not list(faults_of_message(message)), message.findtext("source")
    bad = [make_message("Save", '<translation type="unfinished">Speichern</translation>'),
           make_message("Save", plain("")), make_message("Save %1", plain("Speichern")),
           make_message("%1 to %2", plain("%1 bis %1")), make_message("%1[*]", plain("%1")),
           make_message("&amp;File", plain("Datei")), make_message(" or ", plain("oder")),
           make_message("%1: %n", forms("%1", "%n"), plural), make_message("%n", plain("%n"), plural)]
    for message in bad:
        assert len(list(faults_of_message(message))) == 1, message.findtext("source")

    kept = {("A", "old", ""): good[0], ("A", "both", ""): good[0]}
    fresh = {("A", "new", ""): bad[0], ("A", "both", ""): good[0]}
    assert sorted(key[1] for key, _ in faults_of_list(kept, fresh)) == ["new", "old"]

    source = ('QString Tr(const char* text) { return QCoreApplication::translate("A", text); }\n'
              'label->setText(tr("Save"));\nlabel->setText(QStringLiteral("…"));\nlabel->setObjectName("save");\n'
              'label->setText(QStringLiteral("Save"));\nnew QLabel("Save", this);\nmenu.addAction(Tr("Save"));\n')
    assert sorted(faults_of_source(source)) == [5, 6, 7], list(faults_of_source(source))
    print(f"{len(good) + len(bad) + 2} examples")
    return 0


sys.exit(check_tree(pathlib.Path(sys.argv[1])) if len(sys.argv) > 1 else check_examples())
