# SPDX-License-Identifier: BSD-3-Clause

"""A copy of the sources with its own build, in which mutants are judged."""

import functools
import json
import os
import pathlib
import resource
import shutil
import signal
import subprocess
import sys

# Test programs by folder; the next one runs if a mutant survives.
ORD, WRITERS, ENGINE, TRUST = "ord_tests", "writers_tests", "engine_tests", "trust_tests"
PROGRAMS = {
    "ord": [ORD, ENGINE],
    "outputs": ["outputs_tests", WRITERS, ENGINE, TRUST],
    "writers": [WRITERS, ENGINE, TRUST],
    "engine": [ENGINE, TRUST],
}
# Tests that take long and seldom fail alone come last; those that depend on timing are left out.
LAST = ["*SmallStack*", "FullBuffer.EventsConvertLikeTheReference", "DamagedRecording.*Random*"]
LEFT_OUT = ["KillTest.*", "*KillInSmallBlocks*", "MemoryLimit.*"]
QUICK_SECONDS = 0.1  # per test: all that are this fast run before the others
MOST_MEMORY_BYTES = 8 << 30
MOST_FILE_BYTES = 1 << 30
SECONDS_BETWEEN_LOOKS = 2
IDLE_LOOKS = 10


def _limit(cpu_seconds):
    """A mutant may compute, allocate or write endlessly."""
    resource.setrlimit(resource.RLIMIT_AS, (MOST_MEMORY_BYTES, MOST_MEMORY_BYTES))
    resource.setrlimit(resource.RLIMIT_FSIZE, (MOST_FILE_BYTES, MOST_FILE_BYTES))
    resource.setrlimit(resource.RLIMIT_CPU, (cpu_seconds, cpu_seconds + 1))


def _is_idle(group):
    """Whether each thread of each process of the group sleeps."""
    for process in pathlib.Path("/proc").glob("[0-9]*"):
        try:
            if os.getpgid(int(process.name)) != group:
                continue
            for thread in process.glob("task/*/stat"):
                if thread.read_text().rpartition(")")[2].split()[0] in "RD":
                    return False
        except (OSError, IndexError):
            continue  # it has just ended
    return True


def _wait(process):
    """The exit status, or None once it hangs. A busy machine makes no mutant fail:
    only time that was computed, and sleeping, count."""
    idle = 0
    while idle < IDLE_LOOKS:
        try:
            return process.wait(SECONDS_BETWEEN_LOOKS)
        except subprocess.TimeoutExpired:
            idle = idle + 1 if _is_idle(process.pid) else 0
    return None


def run(command, **options):
    process = subprocess.Popen(command, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                               process_group=0, **options)
    try:
        return _wait(process)
    finally:
        try:  # what a killed program started may still run
            os.killpg(process.pid, signal.SIGKILL)
        except ProcessLookupError:
            pass
        process.wait()


class Workshop:
    def __init__(self, directory, jobs):
        self.tree = directory / "tree"
        self.mutated = directory / "mutated.json"  # the original of the file that is currently changed
        self.build = directory / "build"
        self.temporary = directory / "tmp"
        self.jobs = jobs
        self.stages = {}  # of each program: (filter, most seconds)

    def restore(self):
        if self.mutated.exists():
            file, text = json.loads(self.mutated.read_text())
            (self.tree / file).write_text(text)
            self.mutated.unlink()

    def _copy(self, source, parts):
        archive = subprocess.Popen(["git", "archive", "HEAD", *parts], cwd=source,
                                   stdout=subprocess.PIPE)
        subprocess.check_call(["tar", "-x", "-C", self.tree], stdin=archive.stdout)
        if archive.wait() != 0:
            sys.exit("mutate: git archive failed")

    def prepare(self, source, with_new_tests):
        self.restore()
        if not self.tree.exists():
            self.tree.mkdir(parents=True)
            commit = subprocess.check_output(["git", "rev-parse", "HEAD"], cwd=source, text=True)
            self._copy(source, [])
            (self.tree.parent / "commit").write_text(commit)
        elif with_new_tests:
            self._copy(source, ["tests"])
        linker = "-fuse-ld=lld" if shutil.which("ld.lld") else ""
        subprocess.check_call(
            ["cmake", "-G", "Ninja", "-S", self.tree, "-B", self.build,
             "-DCMAKE_BUILD_TYPE=Release", "-DCMAKE_CXX_FLAGS_RELEASE=-O1 -DNDEBUG",
             f"-DCMAKE_EXE_LINKER_FLAGS={linker}", "-DSTALWICK_BUILD_APP=OFF"],
            stdout=subprocess.DEVNULL)

    def make(self, program):
        return subprocess.call(["ninja", "-C", self.build, "-j", str(self.jobs), program],
                               stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL) == 0

    def _start(self, program, test_filter, cpu_seconds, output=""):
        shutil.rmtree(self.temporary, ignore_errors=True)
        self.temporary.mkdir()
        path = next(path for path in self.build.rglob(program) if path.is_file())
        environment = dict(os.environ, GTEST_FAIL_FAST="1", GTEST_BRIEF="1",
                           GTEST_FILTER=test_filter, GTEST_OUTPUT=output,
                           TMPDIR=str(self.temporary))
        return run([str(path)], env=environment, cwd=self.temporary,
                   preexec_fn=functools.partial(_limit, cpu_seconds)) == 0

    def measure(self, program):
        """Builds the program and runs it unchanged, to learn which of its tests are fast."""
        if not self.make(program):
            sys.exit(f"mutate: {program} does not build without a mutation")
        kept = self.build / f"{program}.stages.json"
        if not kept.exists():
            kept.write_text(json.dumps(self._find_stages(program)))
        self.stages[program] = json.loads(kept.read_text())

    def _find_stages(self, program):
        output = self.build / f"{program}.json"
        everything = "-" + ":".join(LEFT_OUT + LAST)
        before = resource.getrusage(resource.RUSAGE_CHILDREN).ru_utime
        if not self._start(program, everything, 3600, f"json:{output}"):
            sys.exit(f"mutate: {program} fails without a mutation")
        taken = resource.getrusage(resource.RUSAGE_CHILDREN).ru_utime - before
        slow = []
        for suite in json.loads(output.read_text())["testsuites"]:
            for test in suite["testsuite"]:
                seconds = float(test["time"].rstrip("s"))
                if seconds > QUICK_SECONDS:
                    slow.append((seconds, f"{suite['name']}.{test['name']}"))
        names = [name for _, name in sorted(slow)]
        limit = 10 + int(5 * taken)
        stages = [(":".join([everything, *names]), limit)]
        if names:
            stages.append((":".join(names), limit))
        print(f"{program}: {taken:.1f} s, {len(names)} tests are slow", flush=True)
        return [*stages, (":".join(LAST), 300)]

    def _killer(self, programs):
        for program in programs:
            if not self.make(program):
                return "does not compile"
            for test_filter, seconds in self.stages[program]:
                if not self._start(program, test_filter, seconds):
                    return f"killed by {program}"
        return "survived"

    def judge(self, mutation, programs):
        path = self.tree / mutation.file
        text = path.read_text()
        self.mutated.write_text(json.dumps([mutation.file, text]))
        path.write_text(mutation.apply(text))
        try:
            return self._killer(programs)
        finally:
            self.restore()
