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


def say_skipped(names_by_reason):
    for reason, names in names_by_reason.items():
        more = f" and {len(names) - 3} more" if len(names) > 3 else ""
        print(f"skipped: {', '.join(names[:3])}{more}: {reason}")


def say_failed(case, reason):
    # The time shows which ones were ended for taking too long.
    print(f"failed after {float(case.get('time', 0)):.1f} s: {case.get('name')}{': ' + reason if reason else ''}")
    print("".join(f"    {line}\n" for line in output_of(case).splitlines()), end="")


def main(path):
    counts = {"passed": 0, "failed": 0, "skipped": 0}
    skipped, failed = {}, []
    for case in ElementTree.parse(path).iter("testcase"):
        result, reason = outcome(case)
        counts[result] += 1
        if result == "skipped":
            reason = reason or (output_of(case).splitlines() or ["no reason given"])[-1]
            skipped.setdefault(reason, []).append(case.get("name"))
        elif result == "failed":
            failed.append((case, reason))
    say_skipped(skipped)
    for case, reason in failed:
        say_failed(case, reason)
    print(*counts.values())


main(sys.argv[1])
