# SPDX-License-Identifier: BSD-3-Clause

"""Changes one thing at a time in the product's sources and checks whether a test notices.

Works on a copy of the checked-out commit; the checkout itself is never changed. Results are kept:
the same command continues where it was stopped.
"""

import argparse
import json
import pathlib
import random

from mutations import find_mutations
from workshop import PROGRAMS, Workshop

SOURCE = pathlib.Path(__file__).resolve().parents[2]
UNCOUNTED = ("does not compile", "equivalent")


def read_equivalents():
    """Mutants that change no behaviour: file, line of code, old and new text, in any version."""
    equivalents = set()
    for line in (SOURCE / "tools/mutate/equivalent.txt").read_text().splitlines():
        if line.startswith("  "):
            file, code, change = line.strip().split(" | ")
            equivalents.add((file, code, change))
    return equivalents


def choose(tree, folders, seed):
    mutations = []
    for folder in folders:
        for path in sorted((tree / folder).glob("*.cpp")):
            mutations += find_mutations(str(path.relative_to(tree)), path.read_text())
    random.Random(seed).shuffle(mutations)
    return mutations


def report(results, commit):
    judged = {name: verdict for name, verdict in results.items() if verdict not in UNCOUNTED}
    survivors = sorted(name for name, verdict in judged.items() if verdict == "survived")
    equivalent = sum(verdict == "equivalent" for verdict in results.values())
    killed = len(judged) - len(survivors)
    share = 100 * killed / len(judged) if judged else 0
    print(f"commit {commit.strip()}: {len(judged)} mutants, {killed} killed ({share:.1f} %), "
          f"{len(survivors)} survived; {equivalent} more are equivalent")
    for name in survivors:
        print("  " + name)


def parse():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--directory", type=pathlib.Path, required=True,
                        help="where the copy, its build and the results are kept")
    parser.add_argument("--count", type=int, default=200, help="mutants to judge")
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--jobs", type=int, default=2)
    parser.add_argument("--only", help="judge the mutants whose names hold this text")
    parser.add_argument("--again", action="store_true",
                        help="judge the survivors once more, with the tests as they are now")
    parser.add_argument("--list", action="store_true", help="print the results so far and end")
    parser.add_argument("folders", nargs="*", default=list(PROGRAMS))
    return parser.parse_args()


class Session:
    def __init__(self, directory):
        self.kept = directory / "results.jsonl"
        self.results = {}
        if self.kept.exists():
            self.results = dict(json.loads(line) for line in self.kept.read_text().splitlines())

    def counted(self):
        return sum(verdict not in UNCOUNTED for verdict in self.results.values())

    def keep(self, mutation, verdict):
        self.results[mutation.name] = verdict
        with self.kept.open("a") as file:
            file.write(json.dumps([mutation.name, verdict]) + "\n")
        print(f"{self.counted()}: {mutation.name}: {verdict}", flush=True)

    def is_wanted(self, mutation, arguments):
        if arguments.only and arguments.only not in mutation.name:
            return False
        if arguments.again:
            return self.results.get(mutation.name) == "survived"
        return mutation.name not in self.results


def main():
    arguments = parse()
    directory = arguments.directory.resolve()
    session = Session(directory)
    commit = directory / "commit"
    if arguments.list:
        report(session.results, commit.read_text())
        return
    workshop = Workshop(directory, arguments.jobs)
    workshop.prepare(SOURCE, arguments.again)
    programs = sorted({program for folder in arguments.folders for program in PROGRAMS[folder]})
    for program in programs:
        workshop.measure(program)
    equivalents = read_equivalents()
    for mutation in choose(workshop.tree, arguments.folders, arguments.seed):
        if session.counted() >= arguments.count and not arguments.again:
            break
        if not session.is_wanted(mutation, arguments):
            continue
        if mutation.key in equivalents:
            session.keep(mutation, "equivalent")
            continue
        wanted = PROGRAMS[mutation.file.split("/")[0]]
        session.keep(mutation, workshop.judge(mutation, wanted))
    report(session.results, commit.read_text())


if __name__ == "__main__":
    main()
