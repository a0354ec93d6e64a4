"""What a run is measured on, and with."""

import os
import platform
import re
import subprocess

PACKAGES = {
    "NumPy": "python3-numpy", "numexpr": "python3-numexpr", "SciPy": "python3-scipy", "scikit-image": "python3-skimage",
    "OpenCV": "python3-opencv", "libvips": "libvips42", "GEGL": "libgegl-0.4-0", "PoCL": "libpocl2",
}


def read(path):
    try:
        with open(path, encoding="utf-8") as file:
            return file.read()
    except OSError:
        return ""


def package_version(name):
    """Debian 13 has a suffix in the names of libraries that hold times of 64 bits."""
    for one in (name, name + "t64"):
        command = ["dpkg-query", "-W", "-f=${Version}", one]
        answer = subprocess.run(command, capture_output=True, text=True, check=False)
        if answer.returncode == 0 and answer.stdout:
            return re.sub(r"^\d+:|[-+~].*", "", answer.stdout)
    return "not installed"


def our_version(root):
    def git(*words):
        answer = subprocess.run(["git", "-C", str(root), *words], capture_output=True, text=True, check=False)
        return answer.stdout.strip() if answer.returncode == 0 else ""

    version = re.search(r"project\(Value VERSION (\S+)", read(root / "CMakeLists.txt")).group(1)
    commit = git("rev-parse", "--short", "HEAD")
    changed = bool(git("status", "--porcelain", "--untracked-files=no"))
    return f"{version} ({commit}{' and changes' if changed else ''})" if commit else version


def versions(root):
    system = re.search(r'PRETTY_NAME="([^"]*)', read("/etc/os-release"))
    return {
        "valuenodes": our_version(root),
        **{name: package_version(package) for name, package in PACKAGES.items()},
        "Python": platform.python_version(), "Linux": platform.release().partition("-")[0],
        "system": system.group(1) if system else platform.system(),
    }


def describe():
    names = re.findall(r"^model name\s*: (.*)$", read("/proc/cpuinfo"), re.MULTILINE)
    flags = set(" ".join(re.findall(r"^flags\s*: (.*)$", read("/proc/cpuinfo"), re.MULTILINE)[:1]).split())
    memory = re.search(r"MemTotal:\s*(\d+)", read("/proc/meminfo"))
    return {
        "processor": names[0] if names else platform.machine(), "processors": os.cpu_count(),
        "instructions": next((one for one in ("avx512f", "avx2", "avx", "sse4_2") if one in flags), "baseline"),
        "caches": caches(), "memory": int(memory.group(1)) * 1024 if memory else 0,
        "huge pages": "".join(re.findall(r"\[(\w+)\]", read("/sys/kernel/mm/transparent_hugepage/enabled"))),
        "virtual": "hypervisor" in flags,
    }


def caches():
    found = {}
    for index in range(8):
        folder = f"/sys/devices/system/cpu/cpu0/cache/index{index}/"
        level, kind, size = (read(folder + name).strip() for name in ("level", "type", "size"))
        if level and kind != "Instruction":
            found[f"L{level}"] = size
    return found


def load():
    return os.getloadavg()[0]


def processor_ticks():
    """All ticks so far, those of others, and those that the machine's own host took away."""
    numbers = list(map(int, read("/proc/stat").splitlines()[0].split()[1:]))
    return {"all": sum(numbers[:8]), "stolen": numbers[7]}
