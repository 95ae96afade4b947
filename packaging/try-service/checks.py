"""What packaging/try-service.sh finds out in its machine, as root: whether the unit of the service does its work."""
import glob
import json
import os
import pathlib
import re
import signal
import socket
import subprocess
import threading
import time

UNIT = "quarld.service"
APP = "/usr/lib/quarl"
STORE = "sqlite:/var/lib/quarl/quarl.db"
GROUP = pathlib.Path("/sys/fs/cgroup/system.slice") / UNIT
PLUGINS = pathlib.Path("/opt/try")
PORT = 4242
PROCESSORS = os.cpu_count()

# Programs of the convention of monitoring plug-ins. The numbers of seconds tell their processes from others.
PROGRAMS = {
    "busy": """#!/bin/sh
for i in 1 2 3 4 5 6; do (while :; do :; done) & done
sleep 8
kill $(jobs -p)
echo OK
""",
    "hungry": """#!/usr/bin/python3
kept = []
while True:
    kept.append(bytearray(b"x") * (16 << 20))
""",
    "bomb": """#!/usr/bin/python3
import threading, time
threading.stack_size(65536)
try:
    for made in range(6000):
        threading.Thread(target=time.sleep, args=(60,), daemon=True).start()
except RuntimeError:
    time.sleep(5)
print(made, "threads")
""",
    "marked": """#!/bin/sh
setsid sh -c 'trap "" TERM; while :; do sleep 811; done' >/dev/null 2>&1 &
sleep 0.5
echo OK
""",
    "escaped": """#!/bin/sh
env -i setsid sh -c 'trap "" TERM; while :; do sleep 812; done' >/dev/null 2>&1 &
sleep 0.5
echo OK
""",
    "slow": """#!/bin/sh
trap '' TERM
while :; do sleep 813; done
""",
}


class Fault(Exception):
    """Why a check does not hold."""


def must(holds, why):
    if not holds:
        raise Fault(why)


def run(*command, check=True, user=None, limit=90):
    """Standard output of a program, as another user where one is named."""
    if user:
        command = ("runuser", "-u", user, "--", *command)
    done = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True, timeout=limit)
    must(not check or done.returncode == 0,
         f"{' '.join(command)} ended with {done.returncode}: {(done.stderr + done.stdout).strip()[-300:]}")
    return done.stdout.strip()


def ctl(*arguments, **options):
    return run("quarlctl", "--store", STORE, *arguments, **options)


def shown(name):
    return run("systemctl", "show", UNIT, "-P", name)


def until(condition, seconds, why):
    """What a condition finds as soon as it finds something; looks ten times a second."""
    end = time.monotonic() + seconds
    while not (found := condition()):
        must(time.monotonic() < end, f"{why} within {seconds} s")
        time.sleep(0.1)
    return found


def active():
    return shown("ActiveState") == "active"


def text(path):
    try:
        return pathlib.Path(path).read_text().strip()
    except OSError:
        return ""


def running(words):
    """Processes with these words in their command line."""
    found = []
    for folder in glob.glob("/proc/[0-9]*"):
        if words in text(f"{folder}/cmdline").replace("\0", " "):
            found.append(int(folder[6:]))
    return found


def worker_groups():
    return sorted(GROUP.glob("worker-*"))


def members(group):
    return [int(line) for line in text(group / "cgroup.procs").split()]


def worker_of(module):
    """Group and process of the worker that has loaded a module."""
    for group in worker_groups():
        for process in members(group):
            if "modulehost" in text(f"/proc/{process}/comm") + text(f"/proc/{process}/cmdline") and \
                    f"/{module}.dll" in text(f"/proc/{process}/maps"):
                return group, process
    return None


def results():
    """The tests as the store has them, by server and name."""
    return {(test["server"], test["name"]): test for test in json.loads(ctl("list", "tests", "--json"))}


def result_of(server, limit=45):
    """What the one test of a server finds when it is made now."""
    before = results()[server, "it"]["lastExecution"]
    ctl("check", server, check=False)
    def came():
        test = results()[server, "it"]
        return test if test["lastExecution"] != before else None
    return until(came, limit, f"no result of {server}")


def test(module, name="it", **values):
    properties = {"format": 1, "module": module, "values": values, "secrets": {}}
    return {"type": f"{module}.dll", "name": name, "properties": json.dumps(properties)}


def plugin(program, *arguments, name="it", seconds=30):
    return test("monitoringplugin", name, program=program, arguments=list(arguments), timeOut=seconds * 1000)


def configuration():
    def schedule(enabled):
        return {"enabled": enabled, "startDate": "2020-01-01", "startTime": "00:00:00", "deltaTime": 1,
                "deltaType": "minutes"}
    servers = {name: [plugin(str(PLUGINS / name))] for name in PROGRAMS}
    servers["plain"] = [test("tcpport", "port", port=PORT), test("ping", "ping"),
                        test("local", "disk", what="disk", path="/"), plugin("check_dummy", "0", name="dummy")]
    servers["sees"] = [plugin("check_ping", "-H", "{address}", "-w", "99,50%", "-c", "999,60%", "-p", "1", name="ping"),
                       plugin("check_icmp", "-H", "{address}", "-n", "1", name="icmp"),
                       plugin("check_procs", "-u", "root", "-C", "systemd", "-c", "1:", name="procs"),
                       test("local", "home", what="disk", path="/home", mountPoint=True)]
    servers["scheduled"] = [test("tcpport", port=PORT)]
    return {"format": "quarl-configuration", "version": 1,
            "testTypes": [{"name": name, "module": f"{name}.dll"}
                          for name in ("tcpport", "ping", "local", "monitoringplugin")],
            "root": {"schedule": schedule(False),
                     "servers": [{"name": name, "ipAddress": "127.0.0.1", "failThreshold": 1, "tests": tests,
                                  **({"schedule": schedule(True)} if name == "scheduled" else {})}
                                 for name, tests in servers.items()]}}


def prepare():
    run("systemd-sysusers")
    for name, program in PROGRAMS.items():
        (PLUGINS / name).write_text(program)
        (PLUGINS / name).chmod(0o755)
    run("mount", "-t", "tmpfs", "-o", "size=8M", "home", "/home")
    listener = socket.create_server(("127.0.0.1", PORT))
    def serve():
        while True:
            listener.accept()[0].close()
    threading.Thread(target=serve, daemon=True).start()


# The checks, in this order.

def libraries():
    for file in [f"{APP}/{name}" for name in ("quarld", "quarlctl", "quarl-modulehost", "quarl-echo")] + \
            glob.glob(f"{APP}/*.dll") + glob.glob(f"{APP}/plugins/*/*.dll"):
        must("not found" not in run("ldd", file), f"{file} lacks a library")
    return "each program and module finds its libraries"


def start():
    run("systemctl", "daemon-reload")
    run("systemctl", "start", UNIT)
    must(active() and shown("SubState") == "running", f"the unit is {shown('ActiveState')}")
    user = text(f"/proc/{shown('MainPID')}/status")
    name = run("id", "-u", "quarl")
    must(re.search(rf"^Uid:\s+{name}\s+{name}\s+{name}", user, re.M), "it does not run as quarl")
    must(shown("WatchdogTimestampMonotonic") != "0", "no watchdog runs")
    must("tests" in shown("StatusText"), f"its status says {shown('StatusText')!r}")
    return f"started, active, as quarl, watchdog of {shown('WatchdogUSec')}"


def status():
    said = ctl("status")
    must(said.startswith("Service: running") and shown("MainPID") in said, said)
    return "quarlctl status says that it runs"


def all_pass(server):
    """Makes the tests of a server."""
    def made():
        ctl("check", server, check=False)
        return [test for (owner, _), test in results().items() if owner == server and test["lastExecution"]]
    wanted = sum(owner == server for owner, _ in results())
    until(lambda: len(made()) == wanted, 30, f"the tests of {server} were not all made")
    wrong = [f"{test['name']}: {test['lastResult']}" for test in made() if test["state"] != 1]
    must(not wrong, "; ".join(wrong))


def passed():
    file = PLUGINS / "configuration.json"
    file.write_text(json.dumps(configuration()))
    ctl("import", str(file), user="quarl")
    all_pass("plain")
    return "port, ping, disk and plug-in pass"


def sees():
    all_pass("sees")
    return "plug-ins send echoes and see the processes of others, a file system at /home is seen"


def groups():
    must(members(GROUP) == [], "processes lie in the group of the unit itself")
    must(int(shown("MainPID")) in members(GROUP / "service"), "the service does not lie in its leaf")
    controllers = text(GROUP / "cgroup.subtree_control").split()
    must({"cpu", "memory", "pids"} <= set(controllers), f"only {controllers} are handed on")
    workers = worker_groups()
    must(len(workers) >= 4, f"{len(workers)} groups of workers")
    wanted = {"cpu.max": f"{PROCESSORS * 100000 - 10000} 100000", "cpu.weight": "50", "memory.max": str(1 << 30),
              "memory.swap.max": "0", "pids.max": "2048"}
    for group in workers:
        must(members(group), f"{group.name} is empty")
        for file, value in wanted.items():
            # Without swap the kernel has no such file.
            if file == "memory.swap.max" and not (group / file).exists():
                continue
            must(text(group / file) == value, f"{group.name}/{file} is {text(group / file)!r}, not {value!r}")
    return f"{len(workers)} workers in groups of their own with their limits, the service in a leaf"


def processor():
    group, _ = worker_of("monitoringplugin")
    subprocess.Popen(["quarlctl", "--store", STORE, "check", "busy"], stdout=subprocess.DEVNULL)
    until(lambda: len(running(str(PLUGINS / "busy"))) > 6, 10, "the busy program did not start")

    def used(seconds):
        """Processors used, and how often the group was held back."""
        def figures():
            lines = dict(line.split() for line in text(group / "cpu.stat").splitlines())
            return int(lines["usage_usec"]) / 1e6, int(lines["nr_throttled"]), time.monotonic()
        first = figures()
        time.sleep(seconds)
        last = figures()
        return (last[0] - first[0]) / (last[2] - first[2]), last[1] - first[1]

    share, _ = used(4)
    # The unit's limit may be out of reach of what a slow machine has to spare; that it is kept shows with a lower one.
    limit = text(group / "cpu.max")
    (group / "cpu.max").write_text("50000 100000")
    lowered, held = used(2)
    (group / "cpu.max").write_text(limit)
    until(lambda: not running(str(PLUGINS / "busy")), 20, "the busy program did not end")
    must(share <= PROCESSORS - 0.05, f"it used {share:.2f} processors")
    must(lowered < 0.6 and held > 0, f"it used {lowered:.2f} processors when it might use 0.5, held back {held} times")
    return f"busy children use {share:.2f} of {PROCESSORS} processors, {lowered:.2f} when half a one is the limit"


def memory():
    group, _ = worker_of("monitoringplugin")
    main = shown("MainPID")
    said = result_of("hungry")
    must("signal 9" in said["lastResult"], f"the result is {said['lastResult']!r}")
    must(re.search(r"^oom_kill [1-9]", text(group / "memory.events"), re.M), "its group's limit killed nothing")
    must(active() and shown("MainPID") == main and shown("Result") == "success", "the service did not go on")
    return f"a hungry program is killed, the service goes on: {said['lastResult']}"


def processes():
    main = shown("MainPID")
    group, _ = worker_of("monitoringplugin")
    subprocess.Popen(["quarlctl", "--store", STORE, "check", "bomb"], stdout=subprocess.DEVNULL)
    until(lambda: "max 0" not in text(group / "pids.events"), 25, "no start of a thread was refused")
    most = int(text(GROUP / "pids.current"))
    ctl("check", "scheduled")
    until(lambda: not running(str(PLUGINS / "bomb")), 40, "the bomb was left")
    must(active() and shown("MainPID") == main, "the service did not go on")
    return f"a program without end of threads has the unit at {most} of {shown('TasksMax')} tasks, other checks pass"


def leftovers():
    result_of("marked")
    until(lambda: not running("sleep 811"), 2, "a process that moved to a session of its own was left")
    _, worker = worker_of("monitoringplugin")
    result_of("escaped")
    stayed = "stayed until then" if running("sleep 812") else "was gone with its check"
    os.kill(worker, signal.SIGKILL)
    until(lambda: not running("sleep 812"), 3, "a process that also cleared its environment outlived its worker")
    return f"a child in its own session is gone with its check; one without environment with its worker ({stayed})"


def empty_groups():
    def none_left():
        # A group whose processes took long to end goes when the next worker starts.
        ctl("check", "plain")
        os.kill(worker_of("monitoringplugin")[1], signal.SIGKILL)
        ctl("check", "plain")
        return not [group for group in worker_groups() if "populated 0" in text(group / "cgroup.events")]
    until(none_left, 15, "empty groups of workers did not go")
    return "groups of workers that have ended go"


def watchdog():
    folder = pathlib.Path(f"/run/systemd/system/{UNIT}.d")
    folder.mkdir(parents=True)
    (folder / "watchdog.conf").write_text("[Service]\nWatchdogSec=5\n")
    run("systemctl", "daemon-reload")
    before = shown("MainPID")
    run("systemctl", "restart", UNIT)
    must(active() and shown("MainPID") != before, "it was not restarted")
    stamp = shown("WatchdogTimestampMonotonic")
    until(lambda: shown("WatchdogTimestampMonotonic") != stamp, 4, "no sign of life came")
    ctl("check", "plain")
    main, times = shown("MainPID"), int(shown("NRestarts"))
    run("systemctl", "kill", "-s", "STOP", "--kill-whom=main", UNIT)
    since = time.monotonic()
    until(lambda: not active(), 8, "the watchdog did not see that it stands still")
    seen = time.monotonic() - since
    until(lambda: active() and shown("MainPID") != main, 15, "it was not started again")
    must(int(shown("NRestarts")) == times + 1, f"{shown('NRestarts')} restarts, not {times + 1}")
    back = time.monotonic() - since
    ctl("check", "plain")
    groups()
    return f"restarted; one that stands still is ended after {seen:.0f} s of 5 and serves again after {back:.0f} s"


def killed():
    for _ in range(3):
        ctl("check", "plain")
        main, old = shown("MainPID"), [process for group in worker_groups() for process in members(group)]
        must(old, "it had no workers")
        os.kill(int(main), signal.SIGKILL)
        until(lambda: shown("MainPID") not in (main, "0") and active(), 15, "it was not started again")
        left = [process for process in old if pathlib.Path(f"/proc/{process}").exists()]
        must(not left, "workers of the killed one were left")
        ctl("check", "plain")
        groups()
    return "killed three times, started again each time, with its groups"


def stop():
    ctl("check", "escaped", check=False)
    waiting = subprocess.Popen(["quarlctl", "--store", STORE, "check", "slow"], stdout=subprocess.DEVNULL)
    until(lambda: running("sleep 813"), 10, "the slow program did not start")
    since = time.monotonic()
    run("systemctl", "stop", UNIT)
    seconds = time.monotonic() - since
    waiting.kill()
    must(seconds < 30, f"it took {seconds:.0f} s")
    must(shown("ActiveState") == "inactive" and shown("Result") == "success",
         f"it is {shown('ActiveState')}, {shown('Result')}")
    must(not GROUP.exists() or "populated 0" in text(GROUP / "cgroup.events"), "processes were left in its group")
    must(not running("sleep 812") and not running("sleep 813") and not running(APP), "processes were left")
    return f"stopped while a check ran in {seconds:.0f} s, nothing left"


def by_quarlctl():
    ctl("start")
    must(active(), "quarlctl start did not start the unit")
    ctl("stop")
    must(shown("ActiveState") == "inactive", "quarlctl stop did not stop the unit")
    ctl("start")
    owners = {path: path.owner() for path in pathlib.Path("/var/lib/quarl").iterdir()}
    must(set(owners.values()) == {"quarl"}, f"files of others stand in the folder of the store: {owners}")
    return "quarlctl start and stop go to the service manager"


def scheduled():
    def made():
        return results()["scheduled", "it"]["state"] == 1
    until(made, 70, "a scheduled test did not pass")
    return "a scheduled test passes"


def journal():
    lines = [json.loads(line) for line in run("journalctl", "-u", UNIT, "-o", "json").splitlines()]
    own = [line for line in lines if str(line.get("MESSAGE", "")).startswith("Serving the store")]
    must(own, "no line of its start")
    wanted = {"QUARL_STORE": STORE, "PRIORITY": "5", "SYSLOG_IDENTIFIER": "quarld", "_SYSTEMD_UNIT": UNIT}
    for line in own:
        wrong = {key: line.get(key) for key, value in wanted.items() if line.get(key) != value}
        must(not wrong, f"fields of the journal: {wrong}")
    strange = [line["MESSAGE"] for line in lines
               if line.get("SYSLOG_IDENTIFIER") == "quarld" and "QUARL_STORE" not in line]
    must(not strange, f"lines without the store: {strange[:3]}")
    return f"{len(lines)} lines in the journal, with store and priority"


def security():
    said = run("systemd-analyze", "security", "--no-pager", "--threshold=30", UNIT).splitlines()[-1]
    return re.search(r"\d+\.\d+", said)[0] + " is the exposure of the unit (at most 3.0)"


CHECKS = [libraries, start, status, passed, sees, groups, processor, memory, processes, leftovers, empty_groups,
          watchdog, killed, stop, by_quarlctl, scheduled, journal, security]


def main():
    prepare()
    failed = 0
    for check in CHECKS:
        try:
            print(f"ok      {check.__name__}: {check()}", flush=True)
        except Exception as fault:
            failed += 1
            print(f"FAILED  {check.__name__}: {fault if isinstance(fault, Fault) else repr(fault)}", flush=True)
    if failed:
        print(run("journalctl", "--no-pager", "-b", "-o", "cat", "-n", "60", check=False), flush=True)
    print(f"Checks: {len(CHECKS) - failed} held, {failed} failed", flush=True)


main()
