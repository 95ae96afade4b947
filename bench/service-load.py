#!/usr/bin/env python3
"""Load on the real service: many TCP tests of five minutes each against a server of this machine that lets every
connection wait before it answers. Prints rate, lateness, memory and CPU.

  bench/service-load.py [--build build/release] [--tests 100000] [--minutes 5] [--seconds 75] [--latency 50] [--find]

--find: more and more tests a minute until the service does not keep up, and then the lateness at four fifths of the rate
that it reached."""
import argparse
import json
import os
import re
import signal
import subprocess
import sys
import tempfile
import time


def configuration(tests, port, minutes):
    properties = json.dumps({"format": 1, "module": "tcpport",
                             "values": {"port": port, "expect": "ready", "timeOut": 10000}, "secrets": {}})
    each = 100  # tests a server
    return {
        "format": "quarl-configuration", "version": 1,
        "testTypes": [{"name": "TCP port", "module": "tcpport.dll"}],
        "root": {
            "schedule": {"enabled": True, "startDate": "2020-01-01", "startTime": "00:00:00",
                         "deltaTime": minutes, "deltaType": "minutes"},
            "servers": [{"name": f"server-{s}", "ipAddress": f"127.0.{s // 250 % 250}.{s % 250 + 1}",
                         "tests": [{"type": "tcpport.dll", "name": f"port {t}", "properties": properties}
                                   for t in range(min(each, tests - s * each))]}
                        for s in range((tests + each - 1) // each)]},
    }


def family(pid):
    """The process and what it started."""
    members = [pid]
    for member in members:
        try:
            for task in os.listdir(f"/proc/{member}/task"):
                with open(f"/proc/{member}/task/{task}/children") as children:
                    members += [int(child) for child in children.read().split()]
        except FileNotFoundError:
            pass
    return members


def memory(pid):
    """Proportional megabytes of the family."""
    kilobytes = 0
    for member in family(pid):
        try:
            with open(f"/proc/{member}/smaps_rollup") as rollup:
                kilobytes += int(re.search(r"^Pss:\s+(\d+)", rollup.read(), re.M).group(1))
        except (FileNotFoundError, ProcessLookupError, AttributeError):
            pass
    return kilobytes / 1024


def cpu(pid):
    """CPU seconds of the family so far."""
    ticks = 0
    for member in family(pid):
        try:
            with open(f"/proc/{member}/stat") as stat:
                fields = stat.read().rsplit(")", 1)[1].split()
                ticks += int(fields[11]) + int(fields[12])
        except FileNotFoundError:
            pass
    return ticks / os.sysconf("SC_CLK_TCK")


def run(build, tests, minutes, seconds, latency):
    """What the service says of itself after a while, and what was measured around it."""
    programs = os.path.join(build, "quarl")
    server = subprocess.Popen([os.path.join(build, "bench", "quarl_slow_server"), str(latency)],
                              stdout=subprocess.PIPE, text=True)
    service = None
    try:
        with tempfile.TemporaryDirectory() as folder:
            store = f"sqlite:{folder}/load.db"
            with open(f"{folder}/load.json", "w") as file:
                json.dump(configuration(tests, int(server.stdout.readline()), minutes), file)
            subprocess.run([f"{programs}/quarlctl", "--store", store, "import", f"{folder}/load.json"],
                           check=True, stdout=subprocess.DEVNULL)
            service = subprocess.Popen([f"{programs}/quarld", "--foreground", "--store", store],
                                       stderr=subprocess.PIPE, text=True)
            began = time.monotonic()
            most = 0.0
            while time.monotonic() - began < seconds and service.poll() is None:
                time.sleep(1)
                most = max(most, memory(service.pid))
            spent = cpu(service.pid)
            elapsed = time.monotonic() - began
            service.send_signal(signal.SIGTERM)
            messages = service.communicate()[1]
            rows = json.loads(subprocess.run([f"{programs}/quarlctl", "--store", store, "list", "tests", "--json"],
                                             check=True, capture_output=True).stdout)
            if server.poll() is not None:
                sys.exit("The server that it checked has ended; the figures mean nothing.")
    finally:
        for process in (service, server):
            if process and process.poll() is None:
                process.kill()
                process.wait()

    figures = re.search(r"Stopped after (\d+) checks, (\d+) skipped; 99 of 100 began less than (\d+) ms late", messages)
    if not figures:
        sys.exit(f"The service did not end as it should:\n{messages}")
    checks, skipped, late = (int(each) for each in figures.groups())
    passed = sum(1 for row in rows if row["state"] == 1)
    others = [row["lastResult"] for row in rows if row["lastExecution"] and row["state"] != 1]
    wanted = tests / (minutes * 60)
    print(f"{checks} checks in {elapsed:.0f} s: {checks / elapsed:.1f} a second of {wanted:.1f} due; {skipped} skipped; "
          f"{passed} tests passed, {len(others)} did not")
    if others:
        print(f"one that did not: {others[0]}")
    print(f"lateness: 99 of 100 below {late} ms (goal 1000)")
    print(f"memory: {most:.0f} MB at most (goal 500)")
    print(f"CPU: {spent:.1f} s, {100 * spent / elapsed:.0f} % of one processor, "
          f"{1000 * spent / max(checks, 1):.2f} ms a check", flush=True)
    kept = checks >= 0.9 * wanted * elapsed and not others  # reading a million tests at the start takes its time
    return kept, late, most, checks / elapsed


def find(build, seconds, latency):
    """The rate that the service reaches, and whether nothing is late at four fifths of it."""
    rate = 4000
    while True:
        kept, late, _, reached = run(build, 60 * rate, 1, seconds, latency)
        if not kept or late >= 1000:
            break
        rate = rate * 3 // 2
    print(f"full at {reached:.0f} checks a second")
    kept, late, _, _ = run(build, 48 * int(reached), 1, seconds, latency)
    return kept and late < 1000


def main():
    root = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--build", default=os.path.join(root, "build/release"))
    parser.add_argument("--tests", type=int, default=100_000)
    parser.add_argument("--minutes", type=int, default=5, help="interval of the schedule")
    parser.add_argument("--seconds", type=int, default=75, help="how long the service runs")
    parser.add_argument("--latency", type=int, default=50, help="milliseconds")
    parser.add_argument("--find", action="store_true", help="the rate that the service reaches")
    options = parser.parse_args()
    if options.find:
        sys.exit(0 if find(options.build, options.seconds, options.latency) else 1)
    kept, late, most, _ = run(options.build, options.tests, options.minutes, options.seconds, options.latency)
    sys.exit(0 if kept and late < 1000 and most < 500 else 1)


main()
