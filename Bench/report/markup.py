"""Pieces of HTML that the page is made of."""

import html


def escape(text):
    return html.escape(str(text), quote=True)


def tag(name, inner, kind="", **attributes):
    words = {"class": kind, **attributes}
    given = "".join(f' {key.rstrip("_")}="{escape(value)}"' for key, value in words.items() if value != "")
    return f"<{name}{given}>{inner}</{name}>"


def cell(inner, kind="", **attributes):
    return tag("td", inner, kind, **attributes)


def number(inner, kind=""):
    return cell(inner, f"number {kind}".strip())


def noise(inner):
    return number(inner, "noise")


def line(*cells, kind=""):
    return tag("tr", "".join(cells), kind)


def table(titles, lines):
    """Titles that begin with > stand above numbers."""
    head = "".join(
        tag("th", title.removeprefix(">"), "number" if title.startswith(">") else "") for title in titles)
    return tag("table", (tag("tr", head) if titles else "") + "".join(lines))


def card(inner, kind=""):
    return tag("div", inner, f"card {kind}".strip())


def sheet(titles, lines):
    """A table in a card that scrolls where it is too wide."""
    return card(table(titles, lines), "scroll")


def facts(pairs):
    return tag("dl", "".join(tag("dt", escape(name)) + tag("dd", escape(text)) for name, text in pairs), "facts")


def key(color, text, faint=False):
    """An entry of a legend."""
    return tag("span", tag("i", "", style=f"background:var(--{color})" + ";opacity:.45" * faint) + escape(text))


def legend(entries):
    return tag("div", "".join(entries), "legend")
