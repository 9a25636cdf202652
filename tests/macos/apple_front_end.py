"""Configures the program as a Mac does, for both architectures, and compiles its macOS backend as it is shipped with
clang++'s front end for Apple's systems, against declarations of our own. Compares what it takes from the frameworks with
imported_symbols.txt, and what the program is linked and installed with against what macOS reads.

    apple_front_end.py CLANGXX PROJECT_FOLDER            the check
    apple_front_end.py CLANGXX PROJECT_FOLDER --accept   writes the list anew, for review
"""

import json
import plistlib
import re
import shlex
import shutil
import subprocess
import sys
import tempfile
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

HERE, COMPILER, PROJECT = Path(__file__).resolve().parent, shutil.which(sys.argv[1]), Path(sys.argv[2]).resolve()
GOLDEN = HERE / "imported_symbols.txt"
FRAMEWORK_SYMBOL = re.compile(r"\bU? ?_(OBJC_CLASS_\$_\w+|_*k?(?:AX|CF|CG|NS|dispatch)\w+)$", re.MULTILINE)
BACKEND = "clients/apple/Helpers/PerceptionHelper/platform/macos"
# There is no C++ library for Apple's systems here: GCC's stands in, whose headers take the compiler for one of Linux.
STANDIN = ["-Wunguarded-availability", "-U__nonnull", "-D_GNU_SOURCE", "-nostdinc++", f"-I{HERE / 'include'}"]
STANDIN_ON = {"x86_64": [], "arm64": ["-D__x86_64__", "-D__builtin_ia32_pause()=0"]}


def run(*command: object) -> str:
    """Ends the check with the command's words where it fails."""
    done = subprocess.run([*map(str, command)], capture_output=True, text=True, check=False)
    return done.stdout if done.returncode == 0 else sys.exit(f"{shlex.join(map(str, command))}\n{done.stdout}{done.stderr}")


def configure(build: Path, architecture: str) -> None:
    """As the preset for a Mac does, with the system and its tools named, and warnings as errors."""
    presets = json.loads((PROJECT / "CMakePresets.json").read_text())["configurePresets"]
    cache = next(preset["cacheVariables"] for preset in presets if preset["name"] == "macos")
    flags = shlex.join(["-target", f"{architecture}-apple-macosx14.0", *STANDIN, *STANDIN_ON[architecture], *HEADERS])
    cache |= {"CMAKE_SYSTEM_NAME": "Darwin", "CMAKE_OSX_ARCHITECTURES": architecture, "TAVIK_WARNINGS_AS_ERRORS": "ON",
              "CMAKE_INSTALL_NAME_TOOL": "true", "CMAKE_TRY_COMPILE_TARGET_TYPE": "STATIC_LIBRARY"}
    for language in ("CXX", "OBJCXX"):
        cache |= {f"CMAKE_{language}_COMPILER": COMPILER, f"CMAKE_{language}_FLAGS": flags}
    run("cmake", "-S", PROJECT, "-B", build, "-G", "Ninja", *(f"-D{name}={value}" for name, value in cache.items()))


def imports_of(build: Path, architecture: str) -> set[str]:
    configure(build, architecture)
    objects = [f"{BACKEND}/CMakeFiles/tavik_platform_macos.dir/{source.name}.o" for source in (PROJECT / BACKEND).glob("*.mm")]
    headers = ["tavik_platform_macos_verify_interface_header_sets"] if architecture == "arm64" else []
    run("cmake", "--build", build, "--target", *objects, *headers)
    return set(FRAMEWORK_SYMBOL.findall(run("llvm-nm", "-u", *(build / file for file in objects))))


def faults_of(build: Path) -> list[str]:
    """What macOS would not find of the program's Info.plist and policy."""
    section = re.findall(r"-sectcreate -Xlinker (\S+) -Xlinker (\S+) -Xlinker (\S+)", (build / "build.ninja").read_text())
    if section != [("__TEXT", "__info_plist", f"{build}/Info.plist")]:
        return [f"Info.plist is linked as {section}"]
    said = plistlib.loads((build / "Info.plist").read_bytes())
    wanted = {"CFBundleIdentifier": "local.perception.capture.helper", "LSMinimumSystemVersion": "14.0", "LSUIElement": True}
    faults = [f"Info.plist says {said.get(key)} for {key}" for key, value in wanted.items() if said.get(key) != value]
    (build / "tavik-perception-helper").touch()
    run("cmake", "--install", build, "--prefix", build / "installed")
    [program] = filter(Path.is_file, (build / "installed").rglob("tavik-perception-helper"))
    if not program.with_name("perception-sensitive-apps.yaml").is_file():  # the main bundle of a bare executable
        faults.append("the policy is not installed beside the program")
    return faults


if not COMPILER or not shutil.which("llvm-nm"):
    print("skipped: needs clang++ and llvm-nm")
    sys.exit(77)
said = subprocess.run([COMPILER, "-x", "c++", "-E", "-v", "/dev/null"], capture_output=True, text=True, check=True).stderr
HEADERS = [f"-isystem{path}" for path in re.findall(r"^ (/\S+)$", said, re.MULTILINE)]
with tempfile.TemporaryDirectory() as folder, ThreadPoolExecutor() as pool:
    builds = [Path(folder).resolve() / architecture for architecture in STANDIN_ON]
    imports = dict(zip(STANDIN_ON, pool.map(imports_of, builds, STANDIN_ON)))
    faults = faults_of(builds[0])
if "--accept" in sys.argv:
    GOLDEN.write_text("\n".join(sorted(imports["arm64"])) + "\n")
golden = set(GOLDEN.read_text().split())
for architecture, symbols in imports.items():
    for symbol in sorted(symbols ^ golden):
        faults.append(f"{architecture}: {symbol} is {'not reviewed' if symbol in symbols else 'no longer used'}")
print("\n".join(faults) or "the backend compiles for both architectures")
sys.exit(bool(faults))
