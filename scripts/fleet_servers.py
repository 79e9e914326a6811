"""Real servers of a fleet on this machine, each in a folder of its own: shards of ClickHouse, and
rsyslog."""
import os
import signal
import socket
import subprocess
import sys
import time
import urllib.request

SOURCES = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))


def fail(text):
    sys.exit(f"{os.path.basename(sys.argv[0])}: {text}")


def free_port():
    with socket.socket() as one:
        one.bind(("127.0.0.1", 0))
        return one.getsockname()[1]


def wait_for(what, is_so, seconds=120):
    for _ in range(seconds * 10):
        if is_so():
            return
        time.sleep(0.1)
    fail(f"no {what} after {seconds} s")


def can_connect(port):
    with socket.socket() as one:
        return one.connect_ex(("127.0.0.1", port)) == 0


def text_of(name):
    with open(os.path.join(SOURCES, "fleet", name), encoding="utf-8") as file:
        return file.read()


class Server:
    """A program that is started, killed and started again."""

    def __init__(self, folder, name, command, port, environment=None):
        self.command, self.port, self.name = command, port, name
        self.output = os.path.join(folder, name + ".out")
        self.environment = environment
        self.process = None

    def start(self):
        with open(self.output, "ab") as out:
            self.process = subprocess.Popen(self.command, stdout=out, stderr=out, stdin=subprocess.DEVNULL,
                                            env=self.environment)
        wait_for(self.name, lambda: can_connect(self.port))

    def stop(self, signal_number=signal.SIGTERM):
        if self.process is not None:
            self.process.send_signal(signal_number)
            self.process.wait()
            self.process = None


class Shard(Server):
    def __init__(self, folder, number, ports, cluster):
        home = os.path.join(folder, f"shard{number}")
        os.makedirs(os.path.join(home, "conf.d"))
        http, tcp = ports
        with open(os.path.join(home, "users.xml"), "w", encoding="utf-8") as file:
            file.write("<yandex><profiles><default/></profiles><users><default><password></password>"
                       "<networks><ip>127.0.0.1</ip></networks><profile>default</profile>"
                       "<quota>default</quota></default></users><quotas><default/></quotas></yandex>")
        with open(os.path.join(home, "conf.d", "settings.xml"), "w", encoding="utf-8") as file:
            file.write(cluster)
        with open(os.path.join(home, "config.xml"), "w", encoding="utf-8") as file:
            file.write(f"<yandex><logger><level>warning</level><log>{home}/log</log>"
                       f"<errorlog>{home}/errors</errorlog></logger>"
                       f"<http_port>{http}</http_port><tcp_port>{tcp}</tcp_port>"
                       f"<listen_host>127.0.0.1</listen_host><path>{home}/data/</path>"
                       f"<tmp_path>{home}/tmp/</tmp_path><users_config>{home}/users.xml</users_config>"
                       "<default_profile>default</default_profile><default_database>default</default_database>"
                       "<mark_cache_size>5368709</mark_cache_size></yandex>")
        super().__init__(folder, f"shard{number}",
                         ["clickhouse-server", f"--config-file={home}/config.xml"], http)

    def query(self, sql):
        request = urllib.request.Request(f"http://127.0.0.1:{self.port}/", sql.encode())
        with urllib.request.urlopen(request) as answer:
            return answer.read().decode()

    def make_tables(self):
        lines = [line for line in text_of("clickhouse/schema.sql").split("\n") if not line.startswith("--")]
        for statement in "\n".join(lines).split(";"):
            if statement.strip():
                self.query(statement)


def collector(folder, zopctl, port, database, state):
    config = text_of("rsyslog/fleet.conf")
    for old, new in [('"5140"', f'"{port}"'), ("/var/spool/rsyslog", folder),
                     ("/usr/bin/zopctl", zopctl),
                     ("clickhouse://localhost:8123/default", f"{database} --state {state}")]:
        if old not in config:
            fail(f"rsyslog/fleet.conf has no {old}")
        config = config.replace(old, new)
    name = os.path.join(folder, "rsyslog.conf")
    with open(name, "w", encoding="utf-8") as file:
        file.write(f'global(workDirectory="{folder}")\n' + config)
    return Server(folder, "rsyslogd",
                  ["rsyslogd", "-n", "-f", name, "-i", os.path.join(folder, "rsyslog.pid")], port)


def two_shards(folder):
    """Started, with their tables."""
    ports = [(free_port(), free_port()) for _ in range(2)]
    cluster = text_of("clickhouse/settings.xml")
    for number, (_, tcp) in enumerate(ports, 1):
        cluster = cluster.replace(f"<host>fleet-{number}</host><port>9000</port>",
                                  f"<host>127.0.0.1</host><port>{tcp}</port>")
    shards = [Shard(folder, number, pair, cluster) for number, pair in enumerate(ports, 1)]
    for shard in shards:
        shard.start()
        shard.make_tables()
    return shards
