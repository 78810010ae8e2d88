#!/usr/bin/env python3
"""Runs picture_bench and prints its figures as a table: pictures a second of each form and peer.

Benchmarks of one run are interleaved at random and the median of several rounds is taken, so that
ratios hold on a busy machine too. Single threads count their processor time, two threads the clock.

    bench/table.py build/release/bin/picture_bench [--height 576] [--rounds 5] [--filter REGEX]
"""
import argparse
import collections
import json
import statistics
import subprocess


def measure(program, height, rounds, pattern):
    text = subprocess.run(
        [program, "--benchmark_format=json", "--benchmark_enable_random_interleaving=true",
         "--benchmark_min_time=0.05", f"--benchmark_repetitions={rounds}",
         f"--benchmark_filter=({pattern}).*/{height}"],
        check=True, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True).stdout
    found = collections.defaultdict(lambda: collections.defaultdict(list))
    for run in json.loads(text)["benchmarks"]:
        if run.get("run_type") == "aggregate" or "items_per_second" not in run:
            continue
        kernel, form = run["name"].split("/")[:2]
        found[kernel][form].append(run["items_per_second"])
    return {kernel: {form: statistics.median(speeds) for form, speeds in forms.items()}
            for kernel, forms in found.items()}


def main():
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("program")
    parser.add_argument("--height", default="576")
    parser.add_argument("--rounds", default=5, type=int)
    parser.add_argument("--filter", default=".*")
    options = parser.parse_args()
    pattern = options.filter if options.filter == ".*" else f"memcpy|{options.filter}"
    kernels = measure(options.program, options.height, options.rounds, pattern)
    memcpy = kernels.pop("memcpy")["fast"]
    print(f"720 by {options.height}, memcpy: {memcpy:.0f} pictures a second\n")
    print("| kernel | plain | fast | of memcpy | two threads | peers (fast is times as fast) |")
    print("|---|---:|---:|---:|---:|---|")
    for kernel in sorted(kernels):
        forms = kernels[kernel]
        fast = forms.pop("fast", None)
        cells = [f"{forms.pop('plain'):.0f}" if "plain" in forms else "",
                 f"{fast:.0f}" if fast else "", f"{fast / memcpy:.2f}" if fast else ""]
        two = forms.pop("two threads", None)
        cells.append(f"{two:.0f}" if two else "")
        cells.append("; ".join(f"{name} {speed:.0f}" + (f" ({fast / speed:.2f})" if fast else "")
                               for name, speed in sorted(forms.items())))
        print(f"| {kernel} | " + " | ".join(cells) + " |")


if __name__ == "__main__":
    main()
