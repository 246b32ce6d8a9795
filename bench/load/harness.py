#!/usr/bin/env python3
"""Many planners at once on an office's cluster (scripts/office-cluster), with figures.

Each planner is a process of its own (velmora_load_planner): a control on its own
connection replaying the journeys of bench/load/journeys for a given time, every answer
checked against the same journey on a quiet SQLite copy of the account. The runs, each
beside its floor in the same call:

  floor-D     D planners on direct connections to the primary (no pooler): the server's
              saturation without a pooler, which the pooled runs are compared with;
  pooled-N    N planners through PgBouncer;
  failover-N  N planners, those the standby takes on it (a URI that lists the standby then
              PgBouncer, prefer-standby) and the rest through PgBouncer; the standby is
              stopped at a quarter of the run and started again at half of it;
  alone-*     one planner alone through PgBouncer, on the standby, and direct on the
              primary, for the time of Init.

With --import-loop the writer imports, again and again during every run, the task
catalogue exported from the same account: each import rewrites its records in one
transaction with the values they already hold, so every committed state the planners can
read (on the primary, or on the standby however late) is the state the SQLite copy holds.

Writes into OUT: table.json (one row per run), table.md, load.svg (latency centiles and
throughput against the number of planners) and raw/ (each planner's JSON line). Exits 1
when a run had an error beyond the failovers' allowed losses, a wrong answer or a refused
planner.
"""

import argparse
import json
import math
import os
import resource
import shutil
import subprocess
import sys
import tempfile
import threading
import time
import urllib.parse
from pathlib import Path

HERE = Path(__file__).resolve().parent
ROOT = HERE.parent.parent


def centile(values, p):
    """The nearest-rank centile p (0-100] of values; None for no values."""
    if not values:
        return None
    ordered = sorted(values)
    rank = max(1, math.ceil(p / 100 * len(ordered)))
    return ordered[rank - 1]


def latency_summary(micros):
    """Count, median, 95th, 99th centile and maximum of latencies in µs, in ms."""
    def ms(v):
        return None if v is None else round(v / 1000, 3)
    return {"count": len(micros), "median": ms(centile(micros, 50)), "p95": ms(centile(micros, 95)),
            "p99": ms(centile(micros, 99)), "max": ms(max(micros) if micros else None)}


def summarize(run, lines, planners, seconds, stops=0):
    """One row of the table from the planners' JSON lines (None for a planner that printed
    nothing). A planner on a server stopped `stops` times may lose one procedure per stop,
    if the procedure after each loss succeeds; anything beyond is an error."""
    latencies = {}
    row = {"run": run, "planners": planners, "seconds": seconds, "procedures": 0, "journeys": 0,
           "errors": 0, "errors_beyond_allowed": 0, "wrong": 0, "refused": 0, "lost_planners": 0,
           "failovers": {"planners_hit": 0, "max_failed_in_a_row": 0, "not_recovered": 0},
           "error_samples": []}
    for line in lines:
        if line is None:
            row["lost_planners"] += 1
            continue
        if "refused" in line:
            row["refused"] += 1
            row["error_samples"].append(line["refused"])
            continue
        for name, values in line["latencies_us"].items():
            latencies.setdefault(name, []).extend(values)
        for key in ("procedures", "journeys", "errors", "wrong"):
            row[key] += line[key]
        in_a_row = line["max_failed_in_a_row"]
        allowed = stops if in_a_row <= 1 and line["recovered"] else 0
        row["errors_beyond_allowed"] += max(0, line["errors"] - allowed)
        if line["errors"]:
            fo = row["failovers"]
            fo["planners_hit"] += 1
            fo["max_failed_in_a_row"] = max(fo["max_failed_in_a_row"], in_a_row)
            fo["not_recovered"] += 0 if line["recovered"] else 1
            if len(row["error_samples"]) < 3:
                row["error_samples"].extend(s["message"] for s in line["error_samples"][:1])
    row["throughput"] = round(row["procedures"] / seconds, 1) if seconds else 0
    everything = [v for values in latencies.values() for v in values]
    row["latency_ms"] = {"all": latency_summary(everything)}
    row["latency_ms"].update({name: latency_summary(v) for name, v in sorted(latencies.items())})
    return row


def failed(row):
    """Why a row fails the harness, or None."""
    reasons = [f"{row[k]} {k.replace('_', ' ')}" for k in
               ("errors_beyond_allowed", "wrong", "refused", "lost_planners") if row[k]]
    return f"{row['run']}: " + ", ".join(reasons) if reasons else None


def read_uris(path):
    uris = {}
    for line in Path(path).read_text().splitlines():
        name, _, uri = line.partition("=")
        if uri:
            uris[name.strip()] = uri.strip()
    return uris


def failover_uri(standby, pooler):
    """The standby first, then the pooler, preferring a standby: a planner whose standby
    goes away reconnects through the pooler, whose 20 server connections are all the
    primary sees of the planners, however many fall back (the planners' role may hold 50
    connections a server). A URI that already lists several hosts is kept."""
    s = urllib.parse.urlsplit(standby)
    if "," in s.netloc:
        return standby
    p = urllib.parse.urlsplit(pooler)
    hosts = s.netloc + "," + p.netloc.rpartition("@")[2]
    query = urllib.parse.parse_qs(s.query)
    query.setdefault("target_session_attrs", ["prefer-standby"])
    return urllib.parse.urlunsplit((s.scheme, hosts, s.path, urllib.parse.urlencode(query, doseq=True), ""))


class Harness:
    def __init__(self, args):
        self.args = args
        self.out = Path(args.out)
        self.uris = read_uris(Path(args.cluster) / "uris")
        self.env = dict(os.environ, PGPASSFILE=str(Path(args.cluster).resolve() / "pgpass"))
        self.journeys = sorted(str(p) for p in (HERE / "journeys").glob("*.play"))
        self.journeys.append(str(ROOT / "data/sample/journey.play"))
        self.imports = {"done": 0, "failed": 0}

    def velmora(self, *words):
        subprocess.run([self.args.velmora, *words], env=self.env, check=True,
                       stdout=subprocess.DEVNULL)

    def prepare(self):
        """The quiet SQLite copy and the catalogue of the import loop, both exported from
        the account through the writer's URI."""
        ref = self.out / "reference"
        shutil.rmtree(ref, ignore_errors=True)
        ref.mkdir(parents=True)
        account = ref / "account.jsonl"
        self.velmora("export", "--db", self.uris["writer"], str(account))
        self.reference = ref / "quiet.db"
        self.velmora("import", str(account), "--db", str(self.reference))
        wanted = {"TACHE", "GROUPETACHE", "TYPETACHE"}
        self.catalogue = ref / "tasks.jsonl"
        with open(account, encoding="utf-8") as src, open(self.catalogue, "w", encoding="utf-8") as dst:
            for line in src:
                if json.loads(line).get("file") in wanted:
                    dst.write(line)

    def import_loop(self, stop):
        while not stop.is_set():
            done = subprocess.run([self.args.velmora, "import", str(self.catalogue), "--db",
                                   self.uris["writer"]], env=self.env, stdout=subprocess.DEVNULL,
                                  stderr=subprocess.DEVNULL)
            self.imports["done" if done.returncode == 0 else "failed"] += 1
            stop.wait(self.args.import_pause)

    def standby_sessions(self):
        """The planners' sessions on the standby, seen by the writer's role (the planners'
        own may have no connection left)."""
        writer = urllib.parse.urlsplit(self.uris["writer"])
        standby = urllib.parse.urlsplit(self.uris["standby"])
        uri = writer._replace(netloc=writer.netloc.rpartition("@")[0] + "@" +
                              standby.netloc.rpartition("@")[2]).geturl()
        done = subprocess.run(["psql", "-X", "-At", "-d", uri, "-c",
                               "SELECT count(*) FROM pg_stat_activity WHERE usename = 'velmora_planner'"],
                              env=self.env, capture_output=True, text=True)
        return int(done.stdout) if done.returncode == 0 and done.stdout.strip() else None

    def cluster(self, command):
        subprocess.run([self.args.cluster_script, command, self.args.cluster, "standby"],
                       env=self.env, check=True, stdout=subprocess.DEVNULL)

    def play(self, run, targets, stops=False):
        """Starts the planners (targets: one URI per planner), all at one moment, and
        gathers their lines; with stops, stops the standby at a quarter of the run and starts
        it again at half of it."""
        seconds = self.args.seconds
        raw = self.out / "raw" / run
        shutil.rmtree(raw, ignore_errors=True)
        raw.mkdir(parents=True)
        procs = []
        for i, uri in enumerate(targets):
            with open(raw / f"{i}.json", "w") as out:
                procs.append(subprocess.Popen(
                    [self.args.planner, "--uri", uri, "--reference", str(self.reference),
                     "--seconds", str(seconds), "--id", str(i), *self.journeys],
                    env=self.env, stdin=subprocess.PIPE, stdout=out))
        # Every planner ready (its reference played, its connection open) or gone, then all
        # started at once.
        deadline = time.time() + 120 + 0.2 * len(targets)
        for i, p in enumerate(procs):
            while (raw / f"{i}.json").stat().st_size == 0 and p.poll() is None and time.time() < deadline:
                time.sleep(0.05)
        for p in procs:
            try:
                p.stdin.write(b"go\n")
                p.stdin.close()
            except BrokenPipeError:
                pass
        start = time.time()
        events = {}
        if stops:
            # The scripts take seconds on a loaded machine: the times kept are when the
            # standby went down and when it was back, from the planners' start.
            # Counted aside: a connection of psql may take seconds under the load.
            def count():
                time.sleep(seconds / 8)
                events["standby_sessions_before_stop"] = self.standby_sessions()
            counting = threading.Thread(target=count)
            counting.start()
            time.sleep(max(0, start + seconds / 4 - time.time()))
            self.cluster("stop")
            events["standby_stopped_at"] = round(time.time() - start, 1)
            time.sleep(max(2, start + seconds / 2 - time.time()))
            self.cluster("start")
            events["standby_restarted_at"] = round(time.time() - start, 1)
            time.sleep(1)
            events["standby_sessions_after_restart"] = self.standby_sessions()
            counting.join()
            # Planners come back to the standby between procedures, 30 s after they left
            # it (the store's kStandbyRetry): the most seen there until the run ends (a
            # count may take seconds under the load, so it is taken again and again).
            events["standby_sessions_most_after_restart"] = 0
            def recount():
                while time.time() < start + seconds:
                    seen = self.standby_sessions() or 0
                    if time.time() < start + seconds:
                        events["standby_sessions_most_after_restart"] = max(
                            seen, events["standby_sessions_most_after_restart"])
                    time.sleep(1)
            recounting = threading.Thread(target=recount)
            recounting.start()
        if stops:
            recounting.join()
        for p in procs:
            try:
                p.wait(timeout=max(10, start + seconds + 120 - time.time()))
            except subprocess.TimeoutExpired:
                p.kill()
                p.wait()
        lines = []
        for i in range(len(targets)):
            text = (raw / f"{i}.json").read_text().strip().splitlines()
            last = json.loads(text[-1]) if text else {}
            lines.append(None if "ready" in last or not last else last)
        row = summarize(run, lines, len(targets), seconds, 1 if stops else 0)
        row.update(events)
        print(f"{run}: {row['throughput']} procedures/s, Init median "
              f"{row['latency_ms'].get('Init', {}).get('median')} ms, {row['errors']} errors, "
              f"{row['wrong']} wrong", flush=True)
        return row

    def runs(self):
        a, u = self.args, self.uris
        pooled = [u[name] for name in sorted(u) if name.startswith("pooler")]
        rows = []
        for d in a.floor:
            rows.append(self.play(f"floor-{d}", [u["primary"]] * d))
        for n in a.pooled:
            rows.append(self.play(f"pooled-{n}", [pooled[i % len(pooled)] for i in range(n)]))
        if a.failover:
            on_standby = min(a.failover, a.standby_planners)
            targets = [failover_uri(u["standby"], u["pooler"])] * on_standby
            targets += [pooled[i % len(pooled)] for i in range(a.failover - on_standby)]
            rows.append(self.play(f"failover-{a.failover}", targets, stops=True))
        if a.alone:
            for name in ("primary", "pooler", "standby"):
                rows.append(self.play(f"alone-{name}", [u[name]]))
        return rows


def plot(rows, out):
    """load.svg: Init's centiles and the throughput against the number of planners, pooled
    and direct (the floor)."""
    if not shutil.which("gnuplot"):
        print("gnuplot is not installed: no plot", file=sys.stderr)
        return
    series = {"pooled": [], "floor": []}
    for row in rows:
        kind = row["run"].split("-")[0]
        init = row["latency_ms"].get("Init")
        if kind in series and init and init["count"]:
            series[kind].append((row["planners"], init["median"], init["p95"], init["p99"],
                                 row["throughput"]))
    for kind, points in series.items():
        with open(out / f"{kind}.dat", "w") as f:
            for p in sorted(points):
                f.write(" ".join(str(v) for v in p) + "\n")
    def curves(columns):
        # (column, title, dash) per curve of each series that has points
        return ", ".join(f"'{out / (kind + '.dat')}' u 1:{c} w lp dt {dash} t '{label} {title}'"
                         for kind, label, dash in (("pooled", "pooler", 1), ("floor", "direct", 2))
                         if series[kind] for c, title in columns)
    if not series["pooled"] and not series["floor"]:
        return
    script = f"""
set terminal svg size 1000,450 dynamic font 'sans,11'
set output '{out / 'load.svg'}'
set multiplot layout 1,2
set logscale x 2
set xlabel 'planners'
set key top left
set ylabel 'Init latency (ms)'
set logscale y
set title 'Init: median, 95th and 99th centile'
plot {curves(((2, 'median'), (3, '95th'), (4, '99th')))}
unset logscale y
set yrange [0:*]
set ylabel 'procedures per second'
set title 'Throughput'
set key bottom right
plot {curves(((5, ''),))}
unset multiplot
"""
    subprocess.run(["gnuplot"], input=script, text=True, check=False)


def markdown(rows):
    head = ("| Run | Planners | Procedures/s | Init median / 95th / 99th / max (ms) | "
            "All procedures median / 95th / 99th / max (ms) | Errors (beyond allowed) | Wrong | "
            "Refused | Failovers (planners hit, most in a row, not recovered) |")
    lines = [head, "|" + "---|" * 9]
    for r in rows:
        def cells(s):
            return " / ".join("-" if s.get(k) is None else f"{s[k]:g}" for k in ("median", "p95", "p99", "max"))
        fo = r["failovers"]
        lines.append(f"| {r['run']} | {r['planners']} | {r['throughput']:g} | "
                     f"{cells(r['latency_ms'].get('Init', {}))} | {cells(r['latency_ms']['all'])} | "
                     f"{r['errors']} ({r['errors_beyond_allowed']}) | {r['wrong']} | {r['refused']} | "
                     f"{fo['planners_hit']}, {fo['max_failed_in_a_row']}, {fo['not_recovered']} |")
    return "\n".join(lines) + "\n"


def goals(rows):
    """The goals measured beside their floors in this run: the most planners through the
    pooler against 8 direct connections (at least 0.8 of their throughput), and one planner
    alone through the pooler and on the standby against direct on the primary (Init's
    median within 1.3x)."""
    by = {r["run"]: r for r in rows}
    found = []
    pooled = sorted((r for r in rows if r["run"].startswith("pooled-")), key=lambda r: r["planners"])
    if pooled and "floor-8" in by and by["floor-8"]["throughput"]:
        ratio = pooled[-1]["throughput"] / by["floor-8"]["throughput"]
        found.append({"goal": f"{pooled[-1]['run']} throughput >= 0.8 x floor-8", "ratio": round(ratio, 2),
                      "met": ratio >= 0.8})
    direct = by.get("alone-primary", {}).get("latency_ms", {}).get("Init", {}).get("median")
    for name in ("alone-pooler", "alone-standby"):
        init = by.get(name, {}).get("latency_ms", {}).get("Init", {}).get("median")
        if direct and init:
            found.append({"goal": f"{name} Init median <= 1.3 x alone-primary", "ratio": round(init / direct, 2),
                          "met": init / direct <= 1.3})
    return found


def numbers(text):
    return [int(w) for w in text.split(",") if w.strip()]


def main(argv=None):
    ap = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    ap.add_argument("--cluster", required=True, help="the folder of scripts/office-cluster start")
    ap.add_argument("--out", required=True, help="the folder the figures are written into")
    ap.add_argument("--planner", default=str(ROOT / "build/release/bench/load/velmora_load_planner"))
    ap.add_argument("--velmora", default=str(ROOT / "build/release/apps/velmora"))
    ap.add_argument("--cluster-script", default=str(ROOT / "scripts/office-cluster"))
    ap.add_argument("--seconds", type=float, default=30)
    ap.add_argument("--floor", type=numbers, default=[1, 8, 16], help="direct planners, e.g. 1,8,16")
    ap.add_argument("--pooled", type=numbers, default=[1, 50, 200, 500], help="e.g. 1,50,200,500")
    ap.add_argument("--failover", type=int, default=500, help="planners of the standby-stop run (0: none)")
    ap.add_argument("--standby-planners", type=int, default=40,
                    help="of those, how many on the standby (falling back through the pooler)")
    ap.add_argument("--alone", action="store_true", help="one planner alone on each target, for Init")
    ap.add_argument("--import-loop", action="store_true")
    ap.add_argument("--import-pause", type=float, default=0.5, help="seconds between two imports")
    args = ap.parse_args(argv)
    soft, hard = resource.getrlimit(resource.RLIMIT_NOFILE)
    resource.setrlimit(resource.RLIMIT_NOFILE, (hard, hard))

    h = Harness(args)
    h.out.mkdir(parents=True, exist_ok=True)
    h.prepare()
    stop = threading.Event()
    loop = threading.Thread(target=h.import_loop, args=(stop,))
    if args.import_loop:
        loop.start()
    try:
        rows = h.runs()
    finally:
        stop.set()
        if loop.is_alive():
            loop.join()
    table = {"when": time.strftime("%Y-%m-%d %H:%M UTC", time.gmtime()), "seconds": args.seconds,
             "imports": h.imports if args.import_loop else None, "cores": os.cpu_count(),
             "load_average": os.getloadavg(), "goals": goals(rows), "rows": rows}
    (h.out / "table.json").write_text(json.dumps(table, indent=1, ensure_ascii=False) + "\n")
    (h.out / "table.md").write_text(markdown(rows))
    plot(rows, h.out)
    print(markdown(rows))
    for g in table["goals"]:
        print(f"goal {g['goal']}: {g['ratio']} ({'met' if g['met'] else 'missed'})")
    if args.import_loop:
        print(f"imports: {h.imports['done']} done, {h.imports['failed']} failed")
    faults = [f for f in map(failed, rows) if f]
    if args.import_loop and h.imports["failed"]:
        faults.append(f"{h.imports['failed']} imports failed")
    for f in faults:
        print("load: " + f, file=sys.stderr)
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
