#!/usr/bin/env python3
"""Changes one operator, constant or condition of the library at a time, and runs the tests that cover the changed file.

A mutation is killed when it fails a test, ends a test program or exceeds its time. The narrowest tests run first, the
sweeps last. Everything happens in build/mutate: the checkout is only read. The mutations that survive are printed; those
of tests/mutants-kept.txt with the reason why no test can kill them.
"""

import argparse
import concurrent.futures
import glob
import json
import os
import queue
import random
import signal
import sys

from mutants import Library, Worker
from mutations import mutations_of

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
RESULTS = os.path.join(ROOT, "build/mutate/results.json")
KEPT = os.path.join(ROOT, "tests/mutants-kept.txt")
FOLDERS = ["win32", "frame", "paths", "fileops", "volumes", "security", "restore", "cache", "module", "exports"]
GOAL = 95.0  # percent of the mutations of a folder


def arguments():
    parser = argparse.ArgumentParser(prog="run mutate", description="Changes the library and counts what tests notice.")
    parser.add_argument("paths", nargs="*", metavar="FILE|FOLDER", help="what to change; the whole library by default")
    parser.add_argument("--sample", type=int, metavar="N", help="at most N mutations of each folder")
    parser.add_argument("--seed", type=int, default=1, help="of the sample")
    parser.add_argument("--survivors", action="store_true", help="only those without a result, or that survived without a reason")
    parser.add_argument("--narrow", action="store_true", help="without the suites that cover every function: quicker")
    parser.add_argument("--workers", type=int, default=2, help="each with a Wine prefix of its own")
    return parser.parse_args()


def read(file):
    with open(os.path.join(ROOT, file), encoding="utf-8") as source:
        return source.read()


def sources(paths):
    found = []
    for path in paths or FOLDERS:
        path = os.path.relpath(os.path.join(ROOT, path), ROOT)
        if os.path.isdir(os.path.join(ROOT, path)):
            found += [os.path.relpath(file, ROOT) for file in sorted(glob.glob(os.path.join(ROOT, path, "*.[ch]*")))]
        elif os.path.isfile(os.path.join(ROOT, path)):
            found.append(path)
        else:
            sys.exit(f"mutate: no such file or folder: {path}")
    return [file for file in found if file.endswith((".cpp", ".h"))]


def key_of(mutation):
    return (mutation.file, mutation.text, mutation.change())


def read_kept():
    """Reasons by file, line and change. A line of the file: file | line of the source | change | reason."""
    kept = {}
    for entry in read("tests/mutants-kept.txt").splitlines():
        if entry and not entry.startswith("#"):
            # The line itself may hold " | ".
            file, rest = entry.split(" | ", 1)
            rest, change, reason = rest.rsplit(" | ", 2)
            kept[(file, rest, change)] = reason
    return kept


def stale(kept, mutations):
    known = {key_of(mutation) for mutation in mutations}
    return [key for key in kept if key not in known]


def read_results():
    if not os.path.exists(RESULTS):
        return {}
    with open(RESULTS, encoding="utf-8") as results:
        return json.load(results)


def write_results(results):
    os.makedirs(os.path.dirname(RESULTS), exist_ok=True)
    with open(RESULTS + ".new", "w", encoding="utf-8") as file:
        json.dump(results, file, indent=1, sort_keys=True)
    os.replace(RESULTS + ".new", RESULTS)


def identity(mutation):
    return f"{mutation.place()} {mutation.change()} | {mutation.text}"


def is_open(mutation, results, kept):
    outcome = results.get(identity(mutation), ["none"])[0]
    return outcome == "none" or (outcome == "survived" and key_of(mutation) not in kept)


def select(options, results, kept):
    selected = []
    by_folder = {}
    for file in sources(options.paths):
        by_folder.setdefault(os.path.dirname(file), []).extend(mutations_of(file, read(file)))
    for folder, mutations in by_folder.items():
        if options.survivors:
            mutations = [mutation for mutation in mutations if is_open(mutation, results, kept)]
        if options.sample and len(mutations) > options.sample:
            mutations = random.Random(f"{options.seed} {folder}").sample(mutations, options.sample)
        selected += sorted(mutations, key=lambda mutation: (mutation.file, mutation.start))
    return selected


def run_all(options, mutations, results):
    library = Library(ROOT, options.narrow)
    for place, (outcome, killer) in results.items():
        library.killers[place.split(":")[0]][killer] += outcome == "killed"
    idle = queue.SimpleQueue()
    pool = concurrent.futures.ThreadPoolExecutor(options.workers)
    workers = [Worker(library, number) for number in range(1, options.workers + 1)]
    try:
        for worker in workers:
            worker.start()
            idle.put(worker)
        futures = {pool.submit(run_one, idle, mutation): mutation for mutation in mutations}
        for future in concurrent.futures.as_completed(futures):
            mutation = futures[future]
            results[identity(mutation)] = future.result()
            write_results(results)
            if future.result()[0] == "survived":
                print(f"survived: {identity(mutation)}", flush=True)
    finally:
        pool.shutdown(cancel_futures=True)
        for worker in workers:
            worker.stop()


def run_one(idle, mutation):
    worker = idle.get()
    try:
        return worker.outcome(mutation, read(mutation.file))
    finally:
        idle.put(worker)


def report(mutations, results, kept):
    """Prints the figures of every folder. Returns whether all of them reach the goal and every survivor has a reason."""
    good = True
    for folder in dict.fromkeys(os.path.dirname(mutation.file) for mutation in mutations):
        own = [mutation for mutation in mutations if os.path.dirname(mutation.file) == folder]
        outcomes = [results[identity(mutation)][0] for mutation in own]
        survivors = [mutation for mutation in own if results[identity(mutation)][0] == "survived"]
        unexplained = [mutation for mutation in survivors if key_of(mutation) not in kept]
        killed = outcomes.count("killed")
        counted = killed + len(survivors)
        rate = 100.0 * killed / counted if counted else 100.0
        print(f"{folder}: {killed} of {counted} mutations killed ({rate:.1f} %), {len(survivors)} survived, of which "
              f"{len(survivors) - len(unexplained)} have a reason; {outcomes.count('same code')} gave the same code, "
              f"{outcomes.count('invalid')} did not compile")
        for mutation in survivors:
            print(f"  {identity(mutation)}: {kept.get(key_of(mutation), 'NO REASON')}")
        good = good and rate >= GOAL and not unexplained
    return good


def main():
    signal.signal(signal.SIGTERM, lambda *_: sys.exit(143))
    options = arguments()
    results = read_results()
    kept = read_kept()
    every = [mutation for file in sources(None) for mutation in mutations_of(file, read(file))]
    for file, text, change in stale(kept, every):
        sys.exit(f"mutate: tests/mutants-kept.txt lists what is no mutation any more: {file} | {text} | {change}")
    mutations = select(options, results, kept)
    print(f"{len(mutations)} mutations", flush=True)
    run_all(options, mutations, results)
    if options.survivors:
        chosen = {os.path.dirname(mutation.file) for mutation in mutations}
        mutations = [mutation for mutation in every
                     if os.path.dirname(mutation.file) in chosen and identity(mutation) in results]
    sys.exit(0 if report(mutations, results, kept) else 1)


if __name__ == "__main__":
    main()
