"""What in the load harness would mislead a reader of its figures: the centiles, the
errors a failover may cost, and the planner's check of its answers."""

import json
import os
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parent))
import harness  # noqa: E402


def planner_line(errors=0, in_a_row=0, recovered=True, wrong=0, init=(1000,)):
    return {"procedures": 10, "journeys": 2, "errors": errors, "wrong": wrong,
            "max_failed_in_a_row": in_a_row, "recovered": recovered, "error_samples": [],
            "latencies_us": {"Init": list(init)}}


class Figures(unittest.TestCase):
    def test_centiles_are_nearest_rank(self):
        hundred = list(range(100, 0, -1))
        for values, p, want in [([], 50, None), ([7], 99, 7), ([3, 1, 2], 50, 2), (hundred, 50, 50),
                                (hundred, 95, 95), (hundred, 99, 99), (hundred, 100, 100),
                                ([1, 1000], 50, 1), ([1, 1000], 51, 1000)]:
            self.assertEqual(harness.centile(values, p), want, (values[:5], p))

    def test_a_failover_may_cost_each_planner_one_procedure_per_stop(self):
        for line, stops, beyond in [
            (planner_line(), 0, 0),
            (planner_line(errors=1, in_a_row=1), 1, 0),      # lost one, next succeeded
            (planner_line(errors=1, in_a_row=1), 0, 1),      # no stop: any error counts
            (planner_line(errors=2, in_a_row=1), 1, 1),      # twice for one stop
            (planner_line(errors=2, in_a_row=2), 1, 2),      # two in a row: no allowance
            (planner_line(errors=1, in_a_row=1, recovered=False), 1, 1),
        ]:
            row = harness.summarize("run", [line], 1, 10, stops)
            self.assertEqual(row["errors_beyond_allowed"], beyond, (line, stops))
            self.assertEqual(harness.failed(row) is not None, beyond > 0)

    def test_the_row_adds_planners_up_and_fails_on_what_a_host_would_see(self):
        lines = [planner_line(init=[1000, 3000]), planner_line(init=[2000], wrong=1),
                 {"id": 2, "refused": "la base ne répond pas"}, None]
        row = harness.summarize("pooled-4", lines, 4, 10)
        self.assertEqual((row["procedures"], row["throughput"], row["wrong"], row["refused"],
                          row["lost_planners"]), (20, 2.0, 1, 1, 1))
        self.assertEqual(row["latency_ms"]["Init"],
                         {"count": 3, "median": 2.0, "p95": 3.0, "p99": 3.0, "max": 3.0})
        self.assertEqual(harness.failed(row), "pooled-4: 1 wrong, 1 refused, 1 lost planners")

    def test_planners_on_the_standby_fall_back_through_the_pooler(self):
        standby = "postgresql://velmora_planner@localhost:5433/office"
        pooler = "postgresql://velmora_planner@localhost:6432/office"
        self.assertEqual(harness.failover_uri(standby, pooler),
                         "postgresql://velmora_planner@localhost:5433,localhost:6432/office"
                         "?target_session_attrs=prefer-standby")
        several = "postgresql://p@a:1,b:2/office?target_session_attrs=read-only"
        self.assertEqual(harness.failover_uri(several, pooler), several)


@unittest.skipUnless(os.environ.get("VELMORA_LOAD_PLANNER"), "needs the planner and velmora")
class AnswersChecked(unittest.TestCase):
    """A planner on an account that differs from its reference reports wrong answers."""

    def test_a_changed_duration_is_a_wrong_answer(self):
        planner, velmora = os.environ["VELMORA_LOAD_PLANNER"], os.environ["VELMORA_TOOL"]
        journey = str(harness.ROOT / "data/sample/journey.play")
        with tempfile.TemporaryDirectory() as tmp:
            same, changed = f"{tmp}/same.db", f"{tmp}/changed.db"
            for db in (same, changed):
                subprocess.run([velmora, "sample", "--db", db], check=True, capture_output=True)
            # Ironing at Mme Lefèvre's takes 40 minutes in the sample account; here 45.
            exported = subprocess.run([velmora, "export", "--db", changed], check=True,
                                      capture_output=True, text=True).stdout.splitlines()
            edited = [line.replace('"40"', '"45"') for line in exported if '"TPSSEMAINETYPE"' in line]
            self.assertTrue(any('"45"' in line for line in edited))
            Path(f"{tmp}/edit.jsonl").write_text("\n".join(edited) + "\n")
            subprocess.run([velmora, "import", f"{tmp}/edit.jsonl", "--db", changed], check=True,
                           capture_output=True)
            for db, wrong in [(same, False), (changed, True)]:
                out = subprocess.run([planner, "--uri", db, "--reference", same, "--seconds", "0.5",
                                      journey], check=True, capture_output=True, text=True,
                                     input="go\n").stdout.splitlines()
                self.assertEqual(json.loads(out[0]), {"ready": True})
                line = json.loads(out[-1])
                self.assertGreater(line["journeys"], 0)
                self.assertEqual((line["errors"], line["wrong"] > 0), (0, wrong), db)
                self.assertEqual(line["wrong"] == line["journeys"], wrong)


if __name__ == "__main__":
    unittest.main()
