"""Changes one thing at a time in the product's sources and looks whether a test notices.

Works on a copy of the commit that is checked out; the checkout itself is never touched. What was
judged is kept: the same command goes on where it was stopped.
"""

import argparse
import json
import os
import pathlib
import random
import subprocess
import sys

from mutations import find_mutations

# Test programs by folder, those that end first in front; the next one runs if a mutant survives.
ORD, WRITERS, ENGINE = "ord_tests", "writers_tests", "engine_tests"
PROGRAMS = {
    "ord": [ORD, ENGINE],
    "outputs": ["outputs_tests", WRITERS, ENGINE],
    "writers": [WRITERS, ENGINE],
    "engine": [ENGINE],
}
# What takes long, and fails only together with shorter tests.
LEFT_OUT = ["*SmallStack*", "FullBuffer.EventsConvertLikeTheReference", "DamagedRecording.*Random*"]


def run(command, seconds=None, **options):
    """Exit status, or None after so many seconds."""
    process = subprocess.Popen(command, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                               start_new_session=True, **options)
    try:
        return process.wait(seconds)
    except subprocess.TimeoutExpired:
        os.killpg(process.pid, 9)
        process.wait()
        return None


class Workshop:
    """A copy of the sources with a build of its own."""

    def __init__(self, directory, seconds, jobs):
        self.tree = directory / "tree"
        self.mutated = directory / "mutated.json"  # the file that is changed now, as it was
        self.build = directory / "build"
        self.seconds = seconds
        self.jobs = jobs

    def restore(self):
        if self.mutated.exists():
            file, text = json.loads(self.mutated.read_text())
            (self.tree / file).write_text(text)
            self.mutated.unlink()

    def prepare(self, source):
        self.restore()
        if not self.tree.exists():
            self.tree.mkdir(parents=True)
            commit = subprocess.check_output(["git", "rev-parse", "HEAD"], cwd=source, text=True)
            archive = subprocess.Popen(["git", "archive", "HEAD"], cwd=source,
                                       stdout=subprocess.PIPE)
            subprocess.check_call(["tar", "-x", "-C", self.tree], stdin=archive.stdout)
            if archive.wait() != 0:
                sys.exit("mutate: git archive failed")
            (self.tree.parent / "commit").write_text(commit)
        subprocess.check_call(
            ["cmake", "-G", "Ninja", "-S", self.tree, "-B", self.build, "-DCMAKE_BUILD_TYPE=Release",
             "-DCMAKE_CXX_FLAGS_RELEASE=-O1 -DNDEBUG", "-DSTALWICK_BUILD_APP=OFF"],
            stdout=subprocess.DEVNULL)

    def make(self, program):
        command = ["cmake", "--build", self.build, "-j", str(self.jobs), "--target", program]
        return run(command) == 0

    def passes(self, program):
        paths = [path for path in self.build.rglob(program) if path.is_file()]
        environment = dict(os.environ, GTEST_FAIL_FAST="1", GTEST_BRIEF="1",
                           GTEST_FILTER="-" + ":".join(LEFT_OUT))
        return run([str(paths[0])], self.seconds, env=environment, cwd=self.build) == 0

    def judge(self, mutation, programs):
        path = self.tree / mutation.file
        text = path.read_text()
        self.mutated.write_text(json.dumps([mutation.file, text]))
        path.write_text(mutation.apply(text))
        try:
            for program in programs:
                if not self.make(program):
                    return "does not compile"
                if not self.passes(program):
                    return f"killed by {program}"
            return "survived"
        finally:
            self.restore()


def choose(tree, folders, seed):
    mutations = []
    for folder in folders:
        for path in sorted((tree / folder).glob("*.cpp")):
            mutations += find_mutations(str(path.relative_to(tree)), path.read_text())
    random.Random(seed).shuffle(mutations)
    return mutations


def report(results):
    judged = {name: verdict for name, verdict in results.items() if verdict != "does not compile"}
    survivors = sorted(name for name, verdict in judged.items() if verdict == "survived")
    killed = len(judged) - len(survivors)
    share = 100 * killed / len(judged) if judged else 0
    print(f"{len(judged)} mutants, {killed} killed ({share:.1f} %), {len(survivors)} survived")
    for name in survivors:
        print("  " + name)


def parse():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--directory", type=pathlib.Path, required=True,
                        help="where the copy, its build and the results are kept")
    parser.add_argument("--count", type=int, default=200, help="mutants to judge")
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--seconds", type=int, default=120, help="of a test program at the most")
    parser.add_argument("--jobs", type=int, default=2)
    parser.add_argument("--only", help="judge the mutants whose names hold this text")
    parser.add_argument("--list", action="store_true", help="print the results so far and end")
    parser.add_argument("folders", nargs="*", default=list(PROGRAMS))
    return parser.parse_args()


def main():
    arguments = parse()
    directory = arguments.directory.resolve()
    kept = directory / "results.jsonl"
    results = {}
    if kept.exists():
        results = dict(json.loads(line) for line in kept.read_text().splitlines())
    if arguments.list:
        report(results)
        return
    workshop = Workshop(directory, arguments.seconds, arguments.jobs)
    workshop.prepare(pathlib.Path(__file__).resolve().parents[2])
    programs = sorted({program for folder in arguments.folders for program in PROGRAMS[folder]})
    there = [program for program in programs if workshop.make(program)]
    for program in there:
        if not workshop.passes(program):
            sys.exit(f"mutate: {program} fails without a mutation")
    judged = sum(verdict != "does not compile" for verdict in results.values())
    for mutation in choose(workshop.tree, arguments.folders, arguments.seed):
        if judged >= arguments.count:
            break
        if arguments.only and arguments.only not in mutation.name:
            continue
        if mutation.name in results:
            continue
        wanted = [p for p in PROGRAMS[mutation.file.split("/")[0]] if p in there]
        verdict = workshop.judge(mutation, wanted)
        results[mutation.name] = verdict
        judged += verdict != "does not compile"
        with kept.open("a") as file:
            file.write(json.dumps([mutation.name, verdict]) + "\n")
        print(f"{judged}: {mutation.name}: {verdict}", flush=True)
    report(results)


if __name__ == "__main__":
    main()
