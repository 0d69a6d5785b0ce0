"""Builds the library with one mutation, and runs the tests that cover the changed file."""

import collections
import glob
import hashlib
import json
import os
import re
import resource
import shlex
import shutil
import signal
import subprocess
import threading

from mutations import mutated

# The folders of tests that cover a folder of the library. The unit tests follow, then the suites that cover every
# exported function, for the functions of the folder.
TESTS = {
    "win32": ["fileops", "security", "volumes", "paths", "frame", "cache", "restore"],
    "frame": ["frame", "loading", "fileops"],
    "paths": ["paths", "fileops"],
    "fileops": ["fileops"],
    "volumes": ["volumes"],
    "security": ["security"],
    "restore": ["restore"],
    "cache": ["cache"],
    "module": ["loading", "frame"],
    "exports": ["restore", "volumes", "paths", "cache"],
}
WIDE = ["contract", "sweeps"]
# Suites of the program of the sweeps that are quick: filled buffers, and models.
BUFFERS = "*FilledStackBuffer*:*OverfilledStackBuffer*:GuardedBuffer.*:GuardedHeap.*:GuardedTemporaryDirectoryTest.*"
FILE_MODELS = "DeletionModelTest.*:CopyModelTest.*:RandomInputTest.Listings*:RandomInputTest.Shares*"
QUICK_SWEEPS = {
    "fileops": f"{BUFFERS}:{FILE_MODELS}:*GuardedBufferTest*/List*",
    "paths": f"{BUFFERS}:{FILE_MODELS}:*ImportSweepTest*/GetFileName",
    "win32": f"{BUFFERS}:{FILE_MODELS}",
    "restore": "RandomInputTest.*",
    "volumes": f"{BUFFERS}:*GuardedBufferTest*/BuildSnapshotFilePath",
    "security": BUFFERS,
    "cache": BUFFERS,
    "exports": BUFFERS,
}
PROGRAMS = {"cache": "cache-tests", "loading": "loading-tests", "unit": "unit-tests", "sweeps": "sweeps"}
LIBRARIES = ["-ladvapi32", "-loleaut32", "-lshlwapi"]

SPARE_TIME = 6  # seconds that a program may take beyond twice what it takes without a mutation
MOST_MEMORY = 6 << 30  # bytes of address space: a loop without end must not exhaust the machine
MOST_OUTPUT = 64 << 20  # bytes of a file

FAMILIAR_KILLERS = 12  # tests that are tried first

# What most sources include is compiled once.
COMMON_HEADERS = ["windows.h", "aclapi.h", "oleauto.h", "shlwapi.h", "direct.h", "fcntl.h", "io.h", "algorithm", "cerrno",
                  "climits", "cstdarg", "cstdint", "cstdio", "cstdlib", "ctime", "cwchar", "cwctype", "deque", "map",
                  "memory", "new", "optional", "string", "string_view", "utility", "vector"]

PROGRAM_FOLDER = r"C:\programs\mutate"


def suites_of(root, folder, stem=""):
    """The filter of the suites of a folder of tests whose files begin with the stem."""
    names = set()
    for file in glob.glob(f"{root}/tests/{folder}/{stem}*Test.cpp"):
        with open(file, encoding="utf-8") as source:
            text = source.read()
        names |= {name for name in re.findall(r"^TEST(?:_F)?\((\w+),", text, re.MULTILINE)}
        names |= {f"*/{name}" for name in re.findall(r"^TEST_P\((\w+),", text, re.MULTILINE)}
    return ":".join(f"{name}.*" for name in sorted(names))


class Library:
    """The build of the library without a mutation."""

    def __init__(self, root, narrow):
        self.root = root
        self.narrow = narrow  # without the suites that cover every function
        self.build = f"{root}/build/release"
        self.base = self._copy_of_build()
        self.commands = self._commands_of("kestrovane_objects.dir")
        self.test_commands = self._commands_of("kestrovane-unit-tests.dir/unit/")
        self.compiler = next(iter(self.commands.values()))[0]
        if "ccache" in self.compiler:
            self.compiler = next(iter(self.commands.values()))[1]
        self.users = self._users_of_headers()
        self.plain = {}  # hash of the code of each source without a mutation
        self.times = {}  # seconds of each run without a mutation
        self.killers = collections.defaultdict(collections.Counter)  # by file
        self.common = self._compile_common()

    def _commands_of(self, objects):
        with open(f"{self.build}/compile_commands.json", encoding="utf-8") as commands:
            return {entry["file"]: shlex.split(entry["command"]) for entry in json.load(commands)
                    if objects in entry["command"]}

    def _copy_of_build(self):
        """Copies what the programs are linked from: the build may change while mutations are tested."""
        base = f"{self.root}/build/mutate/base"
        shutil.rmtree(base, ignore_errors=True)
        for folder in ("CMakeFiles/kestrovane_objects.dir", "CMakeFiles/kestrovane.dir",
                       "tests/CMakeFiles/kestrovane-unit-tests.dir", "lib"):
            shutil.copytree(f"{self.build}/{folder}", f"{base}/{folder}")
        return base

    def command_for(self, source, output):
        """The command that compiles a source. Its last word is the source."""
        path = f"{self.root}/{source}"
        command = list(self.commands.get(path) or self.test_commands[path])
        command = command[command.index(self.compiler):]
        command[command.index("-o") + 1] = output
        if "-include" in command:  # a precompiled header would hold the source without a mutation
            del command[command.index("-include"):command.index("-include") + 2]
        return [word for word in command if word not in ("-g", "-Werror", "-Winvalid-pch")]

    def _compile_common(self):
        folder = f"{self.root}/build/mutate/common"
        os.makedirs(folder, exist_ok=True)
        with open(f"{folder}/common.h", "w", encoding="utf-8") as header:
            header.writelines(f"#include <{name}>\n" for name in COMMON_HEADERS)
        source = os.path.relpath(next(iter(self.commands)), self.root)
        command = self.command_for(source, f"{folder}/common.h.gch")
        subprocess.run([*command[:-1], "-w", "-x", "c++-header", f"{folder}/common.h"], cwd=folder, check=True)
        return f"{folder}/common.h"

    def _users_of_headers(self):
        users = {}
        deps = subprocess.run(["ninja", "-C", self.build, "-t", "deps"], capture_output=True, text=True, check=True)
        source = None
        for line in deps.stdout.splitlines():
            match = re.match(r"CMakeFiles/kestrovane_objects\.dir/(\S+)\.obj:", line)
            if not line.startswith(" "):
                source = match.group(1) if match else None
            elif source:
                header = os.path.relpath(os.path.normpath(os.path.join(self.build, line.strip())), self.root)
                users.setdefault(header, []).append(source)
        return users

    def sources_to_compile(self, file):
        if file.endswith(".cpp"):
            return [file]
        # An inline function that a source does not name is not in its code.
        used = self.users.get(file, [])
        if file == "exports/KestrovaneBstr.h":
            used = [source for source in used if self._mentions(source, "CComBSTR|Bstr|FileDesc")]
        # The linker takes an inline function from the tests' objects, if it is there.
        include = f'#include ["<](.*/)?{re.escape(os.path.basename(file))}[">]'
        tests = [os.path.relpath(path, self.root) for path in self.test_commands]
        return used + [test for test in tests if self._mentions(test, include)]

    def _mentions(self, source, pattern):
        with open(f"{self.root}/{source}", encoding="utf-8") as text:
            return re.search(pattern, text.read()) is not None

    def functions_of(self, file):
        """The exported functions that are defined in a source or, if there are none, in the sources of its folder."""
        with open(f"{self.root}/exports/Kestrovane.h", encoding="utf-8") as header:
            exported = set(re.findall(r"^KESTROVANE_API [^(]*?(\w+)\(", header.read(), re.MULTILINE))
        folder = f"{self.root}/{os.path.dirname(file)}"
        return sorted(exported & self._defined([f"{self.root}/{file}"]) or
                      exported & self._defined(glob.glob(f"{folder}/*.cpp")))

    @staticmethod
    def _defined(files):
        defined = set()
        for file in files:
            with open(file, encoding="utf-8") as source:
                defined |= set(re.findall(r"^[\w:<>]+ (\w+)\(", source.read(), re.MULTILINE))
        return defined

    def object_of(self, source):
        return f"{self.base}/CMakeFiles/kestrovane_objects.dir/{source}.obj"


class Worker:
    """Compiles and tests one mutation at a time, in a folder and a Wine prefix of its own."""

    lock = threading.Lock()

    def __init__(self, library, number):
        self.library = library
        self.folder = f"{library.root}/build/mutate/worker-{number}"
        self.prefix = f"{library.root}/build/mutate/wine-{number}"
        self.programs = f"{self.prefix}/drive_c/programs/mutate"

    def start(self):
        os.makedirs(self.folder, exist_ok=True)
        self._wine("start", check=True)
        os.makedirs(self.programs, exist_ok=True)
        for file in glob.glob(f"{self.library.build}/bin/*.exe") + glob.glob(f"{self.library.build}/bin/*.dll"):
            shutil.copy2(file, self.programs)

    def stop(self):
        self._wine("stop")

    def outcome(self, mutation, source):
        """Returns what happened and, for a killed mutation, the test that noticed it."""
        objects = self._compile(mutation, mutated(source, mutation))
        if isinstance(objects, str):
            return [objects, ""]
        if not objects:
            return ["same code", ""]
        runs = list(self._runs(mutation.file))
        killer = self._run_familiar(mutation.file, runs, objects)
        for program, names in [] if killer else runs:
            killer = self._run(program, names, objects)
            if killer:
                break
        if not killer:
            return ["survived", ""]
        self.library.killers[mutation.file][killer] += 1
        return ["killed", killer]

    # Compiling

    def _compile(self, mutation, text):
        changed = f"{self.folder}/{mutation.file}"
        os.makedirs(os.path.dirname(changed), exist_ok=True)
        objects = {}
        sources = self.library.sources_to_compile(mutation.file)
        plain = {source: self._plain_hash(source) for source in sources}  # before the changed header is there
        try:
            for source in sources:
                with open(changed, "w", encoding="utf-8") as file:
                    file.write(text)
                output = self._compile_one(source)
                if output is None:
                    return "invalid"
                if self._hash(output) != plain[source]:
                    objects[source] = output
        finally:
            if os.path.exists(changed):
                os.remove(changed)
        return objects

    def _compile_one(self, source):
        """Compiles a source of the worker's folder or, without one, of the checkout, with the worker's headers."""
        output = f"{self.folder}/{source}.obj"
        os.makedirs(os.path.dirname(output), exist_ok=True)
        own = f"{self.folder}/{source}"
        command = self.library.command_for(source, output)
        command[-1] = own if os.path.exists(own) else f"{self.library.root}/{source}"
        command[1:1] = ["-include", self.library.common, f"-I{self.folder}", f"-I{self.folder}/exports", "-w"]
        if subprocess.run(command, cwd=self.folder, capture_output=True, check=False).returncode != 0:
            return None
        return output

    def _plain_hash(self, source):
        with self.lock:
            known = self.library.plain.get(source)
        if known is None:
            known = self._hash(self._compile_one(source))
            with self.lock:
                self.library.plain[source] = known
        return known

    @staticmethod
    def _hash(file):
        with open(file, "rb") as content:
            code = bytearray(content.read())
        code[4:8] = bytes(4)  # the time stamp of the object
        return hashlib.sha256(code).hexdigest()

    # Linking

    def _objects(self, changed):
        for path in self.library.commands:
            source = os.path.relpath(path, self.library.root)
            yield changed.get(source, self.library.object_of(source))

    def _link_library(self, changed):
        resource_object = f"{self.library.base}/CMakeFiles/kestrovane.dir/Kestrovane.rc.res"
        self._link(["-shared", "-o", f"{self.programs}/Kestrovane.dll", *self._objects(changed), resource_object])

    def _link_unit_tests(self, changed):
        tests = f"{self.library.base}/tests/CMakeFiles/kestrovane-unit-tests.dir"
        objects = [changed.get("tests/" + os.path.relpath(file, tests).removesuffix(".obj"), file)
                   for file in glob.glob(f"{tests}/**/*.obj", recursive=True)]
        archives = [f"{self.library.base}/lib/{name}" for name in ("libkestrovane_test_support.a", "libgtest.a")]
        self._link(["-o", f"{self.programs}/kestrovane-unit-tests.exe",
                    *objects, *self._objects(changed), *archives])

    def _link(self, words):
        subprocess.run([self.library.compiler, "-s", "-fstack-protector-strong", *words, *LIBRARIES],
                       capture_output=True, check=True)

    # Running

    def _runs(self, file):
        """Programs and filters, the narrowest first."""
        root, folder = self.library.root, os.path.dirname(file)
        stem = os.path.splitext(os.path.basename(file))[0]
        narrow = suites_of(root, folder, stem)
        if narrow:
            yield PROGRAMS.get(folder, "tests"), narrow
        for tests in TESTS[folder]:
            yield PROGRAMS.get(tests, "tests"), suites_of(root, tests)
        yield "tests", suites_of(root, "stress", "Growth")
        yield "unit-tests", suites_of(root, "unit")
        if folder in QUICK_SWEEPS:
            yield "sweeps", QUICK_SWEEPS[folder]
        functions = [] if self.library.narrow else self.library.functions_of(file)
        for tests in WIDE if functions else []:
            yield PROGRAMS.get(tests, "tests"), ":".join(f"*/{name}*" for name in functions)

    def _run(self, program, names, objects):
        """Returns what kills the mutation, or nothing. A run is measured first without the mutation: it must pass."""
        if (program, names) not in self.library.times:
            self._measure(program, names)
        self._link_for(program, objects)
        return self._execute(program, names, self._limit(program, names))[0]

    def _run_familiar(self, file, runs, objects):
        """The tests that killed most of the file's mutations before."""
        first = runs[0]
        killers = [killer for killer, _ in self.library.killers[file].most_common(FAMILIAR_KILLERS) if "." in killer]
        if not killers or first not in self.library.times:
            return ""
        self._link_for(first[0], objects)
        return self._execute(first[0], ":".join(killers), self._limit(*first))[0]

    def _limit(self, program, names):
        return 2 * self.library.times[(program, names)] + SPARE_TIME

    def _measure(self, program, names):
        self._link_for(program, {})
        killer, seconds = self._execute(program, names, None)
        if killer:
            raise RuntimeError(f"{killer} of {program} fails without a mutation")
        self.library.times[(program, names)] = seconds

    def _link_for(self, program, objects):
        if program == "unit-tests":
            self._link_unit_tests(objects)
        else:
            self._link_library(objects)

    def _execute(self, program, names, limit):
        """Returns the test that failed, or another reason why the program did not pass, and the seconds it took."""
        self._remove_leftovers()
        before = os.times().elapsed
        log = f"{self.folder}/output.log"
        with open(log, "wb") as output:
            process = subprocess.Popen(
                [f"{self.library.root}/tools/wine.sh", f"{PROGRAM_FOLDER}\\kestrovane-{program}.exe",
                 f"--gtest_filter={names}", "--gtest_fail_fast"],
                env=self._environment(), stdout=output, stderr=subprocess.STDOUT, stdin=subprocess.DEVNULL,
                start_new_session=True, preexec_fn=limit_resources)
            try:
                code = process.wait(limit)
            except subprocess.TimeoutExpired:
                code = None
            if code is None:
                os.killpg(process.pid, signal.SIGKILL)
                process.wait()
        seconds = os.times().elapsed - before
        return ("" if code == 0 else self._killer(log, code)), seconds

    def _remove_leftovers(self):
        """Removes what a killed program has left, such as the directory of cache files: it could fail the next run."""
        drive = f"{self.prefix}/drive_c"
        for folder in [f"{drive}/#Quorvanta", *glob.glob(f"{drive}/kv*-*")]:
            shutil.rmtree(folder, ignore_errors=True)

    @staticmethod
    def _killer(log, code):
        if code is None:
            return "time"
        with open(log, encoding="utf-8", errors="replace") as output:
            lines = output.read().splitlines()
        failed = [line for line in lines if line.startswith("[  FAILED  ]")]
        started = [line for line in lines if line.startswith("[ RUN      ]")]
        if failed:
            return failed[0].split()[3].rstrip(",")
        return f"exit code {code}" + (f" in {started[-1].split()[3]}" if started else "")

    def _environment(self):
        return {**os.environ, "KESTROVANE_PREFIX": self.prefix}

    def _wine(self, verb, check=False):
        subprocess.run([f"{self.library.root}/tools/wine.sh", verb], env=self._environment(), check=check,
                       stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, stdin=subprocess.DEVNULL)


def limit_resources():
    resource.setrlimit(resource.RLIMIT_AS, (MOST_MEMORY, MOST_MEMORY))
    resource.setrlimit(resource.RLIMIT_FSIZE, (MOST_OUTPUT, MOST_OUTPUT))
