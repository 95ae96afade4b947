"""What bench/compare-checkers.sh measures: connections that came, and the CPU time of each program with all it started."""
import json
import os
import signal
import socket
import statistics
import subprocess
import sys
import tempfile
import threading
import time

RATE = 100  # checks a second, of each program
BUSY = {"nagios4": 300, "icinga2": 200, "quarld": 2000, "plug-in": 300}  # and of each about as many as it keeps up with on one processor
TURNS = 5
PLUGIN = "/usr/lib/nagios/plugins/check_tcp"


class Server:
    """Accepts and counts connections. Its own time is this process's, which is never counted."""

    def __init__(self):
        self.count = 0
        self.listener = socket.create_server(("127.0.0.1", 0), backlog=4096)
        self.port = self.listener.getsockname()[1]
        threading.Thread(target=self.run, daemon=True).start()

    def run(self):
        while True:
            self.listener.accept()[0].close()
            self.count += 1


def nagios(folder, port, rate):
    objects = [f"define command {{\n command_name tcp\n command_line {PLUGIN} -H 127.0.0.1 -p {port}\n}}",
               "define timeperiod {\n timeperiod_name always\n alias always\n" + "".join(
                   f" {day} 00:00-24:00\n" for day in ("sunday", "monday", "tuesday", "wednesday", "thursday", "friday",
                                                       "saturday")) + "}",
               "define contact {\n contact_name nobody\n host_notifications_enabled 0\n"
               " service_notifications_enabled 0\n host_notification_period always\n"
               " service_notification_period always\n host_notification_commands tcp\n"
               " service_notification_commands tcp\n}",
               "define host {\n host_name h\n address 127.0.0.1\n max_check_attempts 3\n check_period always\n"
               " active_checks_enabled 0\n notifications_enabled 0\n}"]
    for number in range(rate):
        objects.append(f"define service {{\n host_name h\n service_description s{number}\n check_command tcp\n"
                       " max_check_attempts 3\n check_interval 1\n retry_interval 1\n check_period always\n"
                       " notifications_enabled 0\n}")
    user = subprocess.check_output(["id", "-un"], text=True).strip()
    main = {"log_file": f"{folder}/log", "cfg_file": f"{folder}/objects.cfg", "status_file": f"{folder}/status",
            "object_cache_file": f"{folder}/cache", "precached_object_file": f"{folder}/precache",
            "lock_file": f"{folder}/lock", "temp_file": f"{folder}/temp", "temp_path": folder,
            "check_result_path": folder, "state_retention_file": f"{folder}/retention", "retain_state_information": 0,
            "query_socket": f"{folder}/query", "command_file": f"{folder}/command", "check_external_commands": 0,
            "nagios_user": user, "nagios_group": user, "interval_length": 1, "enable_notifications": 0,
            "use_syslog": 0, "check_for_updates": 0}
    with open(f"{folder}/objects.cfg", "w") as file:
        file.write("\n".join(objects) + "\n")
    with open(f"{folder}/nagios.cfg", "w") as file:
        file.writelines(f"{key}={value}\n" for key, value in main.items())
    return ["nagios4", f"{folder}/nagios.cfg"]


def icinga(folder, port, rate):
    user = subprocess.check_output(["id", "-un"], text=True).strip()
    for name in ("data", "log", "run", "cache", "spool"):
        os.makedirs(f"{folder}/{name}/icinga2", exist_ok=True)
    with open(f"{folder}/icinga2.conf", "w") as file:
        file.write(f"""object CheckerComponent "checker" {{ }}
object CheckCommand "tcp1" {{ command = [ "{PLUGIN}", "-H", "127.0.0.1", "-p", "{port}" ] }}
object Host "h" {{
  check_command = "tcp1"
  enable_active_checks = false
}}
for (i in range({rate})) {{
  object Service "s" + i {{
    host_name = "h"
    check_command = "tcp1"
    check_interval = 1s
    retry_interval = 1s
  }}
}}
""")
    places = {"DataDir": "data", "LogDir": "log", "InitRunDir": "run", "CacheDir": "cache", "SpoolDir": "spool"}
    settings = [f"-DConfiguration.{key}={folder}/{name}/icinga2" for key, name in places.items()]
    settings += [f"-DConfiguration.RunAsUser={user}", f"-DConfiguration.RunAsGroup={user}"]
    return ["icinga2", "daemon", "-c", f"{folder}/icinga2.conf", *settings]


def quarl(programs, module, values):
    """This service with one module; values of a port."""
    def command(folder, port, rate):
        properties = json.dumps({"format": 1, "module": module, "values": values(port), "secrets": {}})
        configuration = {
            "format": "quarl-configuration", "version": 1,
            "testTypes": [{"name": "Check", "module": f"{module}.dll"}],
            "root": {"schedule": {"enabled": True, "startDate": "2020-01-01", "startTime": "00:00:00", "deltaTime": 1,
                                  "deltaType": "minutes"},
                     "servers": [{"name": "h", "ipAddress": "127.0.0.1",
                                  "tests": [{"type": f"{module}.dll", "name": f"s{number}", "properties": properties}
                                            for number in range(60 * rate)]}]}}
        with open(f"{folder}/quarl.json", "w") as file:
            json.dump(configuration, file)
        subprocess.run([f"{programs}/quarlctl", "--store", f"sqlite:{folder}/q.db", "import", f"{folder}/quarl.json"],
                       check=True, stdout=subprocess.DEVNULL)
        return [f"{programs}/quarld", "--foreground", "--store", f"sqlite:{folder}/q.db"]
    return command


def spent(pid):
    """CPU seconds of a process, of what it started, and of what these have waited for."""
    members, ticks = [pid], 0
    for member in members:
        try:
            for task in os.listdir(f"/proc/{member}/task"):
                with open(f"/proc/{member}/task/{task}/children") as children:
                    members += [int(child) for child in children.read().split()]
            with open(f"/proc/{member}/stat") as stat:
                ticks += sum(int(field) for field in stat.read().rsplit(")", 1)[1].split()[11:15])
        except (FileNotFoundError, ProcessLookupError):
            pass
    return ticks / os.sysconf("SC_CLK_TCK")


def measure(name, make, rate, seconds, server):
    """Checks a CPU second, from five seconds after the start on."""
    with tempfile.TemporaryDirectory() as folder:
        command = make(folder, server.port, rate)
        with open(f"{folder}/said", "w") as said:
            process = subprocess.Popen(command, stdout=said, stderr=said, start_new_session=True)
            time.sleep(5)
            before, count = spent(process.pid), server.count
            time.sleep(seconds)
            checks, used = server.count - count, spent(process.pid) - before
            if process.poll() is None:
                process.send_signal(signal.SIGTERM)
            try:
                process.wait(30)
            except subprocess.TimeoutExpired:
                os.killpg(process.pid, signal.SIGKILL)
                process.wait()
        if checks < 0.9 * rate * seconds:
            with open(f"{folder}/said") as said:
                print(f"{name}: only {checks} checks came\n{said.read()[-2000:]}")
            return None
    print(f"{name:8} {rate:5}/s {checks:7} checks  {used:7.2f} CPU s  {checks / used:8.0f} checks a CPU second",
          flush=True)
    return checks / used


def main():
    programs, seconds = sys.argv[1], int(sys.argv[2])
    server = Server()
    makers = {"nagios4": nagios, "icinga2": icinga,
              "quarld": quarl(programs, "tcpport", lambda port: {"port": port})}
    found = {name: [measure(name, make, rate, seconds, server) for rate in (RATE, BUSY[name])]
             for name, make in makers.items()}
    # This service with the plug-in that the others run, in turn with one of them: a machine is not as fast all the time.
    plugin = quarl(programs, "monitoringplugin",
                   lambda port: {"program": "check_tcp", "arguments": ["-H", "{address}", "-p", str(port)]})
    turns = [[measure(name, make, BUSY[name], seconds, server) for name, make in (("nagios4", nagios),
                                                                               ("plug-in", plugin))]
             for _ in range(TURNS)]
    if any(None in rates for rates in (*found.values(), *turns)):
        sys.exit(2)
    others = max(*found["nagios4"], *found["icinga2"])
    low, busy = (rate / others for rate in found["quarld"])
    same = statistics.median(ours / theirs for theirs, ours in turns)
    print(f"own check against the better one at its best: {low:.0f} times the checks at {RATE}/s, {busy:.0f} times when"
          f" busy (goal 40)\nthe same plug-in against nagios4: {same:.2f} times the checks (goal 1.2)")
    sys.exit(0 if busy >= 40 and same >= 1.2 else 1)


main()
