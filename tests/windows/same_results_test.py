"""Two builds of door_results print the same numbers, to 1e-12 relative.

    same_results_test.py <program> -- <other program> [<argument> ...]

Only the platform's exp, log and their kin may differ, by a few ulps.
"""

import subprocess
import sys

TOLERANCE = 1e-12


def results_of(command):
    output = subprocess.run(command, check=True, capture_output=True, text=True).stdout
    return [line.split() for line in output.splitlines()]


def close(first, second):
    a, b = float(first), float(second)
    return a == b or abs(a - b) <= TOLERANCE * max(abs(a), abs(b))


def main(arguments):
    split = arguments.index("--")
    native, windows = results_of(arguments[:split]), results_of(arguments[split + 1:])
    if len(native) < 100 or [row[0] for row in native] != [row[0] for row in windows]:
        sys.exit(f"{len(native)} and {len(windows)} results, or other names")
    different = [(a, b) for a, b in zip(native, windows) if not close(a[1], b[1])]
    for a, b in different:
        print(f"{a[0]}: {a[1]} and {b[1]}")
    print(f"{len(native)} results, {len(different)} differ by more than {TOLERANCE}")
    sys.exit(1 if different else 0)


main(sys.argv[1:])
