"""Reads the results that ctest left (JUnit) and says in words what did not pass.

The last line is "PASSED FAILED SKIPPED", for ./test to read.
"""

import sys
import xml.etree.ElementTree as ElementTree


def outcome(case):
    """ "passed", "failed" or "skipped", and the reason for the latter."""
    status = case.get("status")
    if status == "run":
        return "passed", ""
    if status == "disabled":
        return "skipped", "disabled"
    skipped = case.find("skipped")
    reason = skipped.get("message", "") if skipped is not None else ""
    # ctest also says "skipped" of a test whose program is missing: that is a failure.
    if reason.startswith("SKIP_"):
        return "skipped", ""
    return "failed", reason


def output_of(case):
    return (case.findtext("system-out") or "").strip()


def main(path):
    counts = {"passed": 0, "failed": 0, "skipped": 0}
    cases = [(case, *outcome(case)) for case in ElementTree.parse(path).iter("testcase")]
    for case, result, reason in cases:
        counts[result] += 1
        if result == "skipped":
            why = reason or (output_of(case).splitlines() or ["no reason given"])[-1]
            print(f"skipped: {case.get('name')}: {why}")
    for case, result, reason in cases:
        if result == "failed":
            # The time shows which ones were ended for taking too long.
            print(f"failed after {float(case.get('time', 0)):.1f} s: {case.get('name')}{': ' + reason if reason else ''}")
            print("".join(f"    {line}\n" for line in output_of(case).splitlines()), end="")
    print(*counts.values())


main(sys.argv[1])
