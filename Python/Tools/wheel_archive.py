# SPDX-License-Identifier: Apache-2.0
"""The file of a wheel: an archive with a list of what it holds, the same bytes for the same files."""

import base64
import hashlib
import io
import csv
import stat
import time
import zipfile

# No archive can be older.
_FIRST = (1980, 1, 1, 0, 0, 0)
_PROGRAMS = ("value-decoder", "value-examiner")


def _digest(content):
    return "sha256=" + base64.urlsafe_b64encode(hashlib.sha256(content).digest()).rstrip(b"=").decode()


def write(wheel, tree, info, epoch, level):
    """Packs a folder, with that of the description at the end, as the standard recommends."""
    files = sorted(file.relative_to(tree).as_posix() for file in tree.rglob("*") if file.is_file())
    files.sort(key=lambda name: name.startswith(info + "/"))
    moment = max(_FIRST, time.gmtime(epoch)[:6])
    records = io.StringIO()
    table = csv.writer(records, lineterminator="\n")
    part = wheel.with_name(wheel.name + ".part")

    def add(archive, name, content):
        entry = zipfile.ZipInfo(name, moment)
        entry.create_system = 3
        entry.compress_type = zipfile.ZIP_DEFLATED
        mode = 0o755 if name.rsplit("/", 1)[-1] in _PROGRAMS else 0o644
        entry.external_attr = (stat.S_IFREG | mode) << 16
        archive.writestr(entry, content, compresslevel=level)

    try:
        with zipfile.ZipFile(part, "w") as archive:
            for name in files:
                content = (tree / name).read_bytes()
                add(archive, name, content)
                table.writerow((name, _digest(content), len(content)))
            table.writerow((f"{info}/RECORD", "", ""))
            add(archive, f"{info}/RECORD", records.getvalue())
        part.replace(wheel)
    finally:
        part.unlink(missing_ok=True)
