"""Shows on made runs what the judgement of the campaign finds, and what it lets pass."""

import types
import unittest
import unittest.mock

import campaign
import machine
import verdict
from machine import AGENT_ID, DMIDECODE_ID, LOG, SYSFS_ID, Found, Run

OLD = machine.OLD_LINES.encode()
FRESH = "{12345678-1234-4234-9234-123456789abc}"
WARNING = "WARN|Failed to parse system UUID: Failed to execute 'dmidecode | grep -i uuid' command."
BANNER = ["/" * 74, "name: /tool/nelvoagentid", "Looking for existed agentId"]
FROM_FILE = [*BANNER, "Existed agentId found in agent file", "Agent id: " + AGENT_ID]
FROM_DMIDECODE = [*BANNER, "  Existed agentId was not found in agent file", "Existed agentId found by dmidecode",
                  "Agent id: " + DMIDECODE_ID]
MADE = [*BANNER, "  Existed agentId was not found in agent file", WARNING,
        "  Existed agentId was not found by dmidecode", "  Existed agentId was not found in sysfs",
        "Existed agentId was not found", "Generate new nelvo agent id", "Agent id: " + FRESH]
NO_LOG = "Failed to initialize log [nelvoagentid.log].\nInput/output error\n"
NOT_PRINTED = "Failed to write agent id to standard output.\n"
NO_AGENT_FILE = "Failed to open file [/etc/nelvoagentid].\n"


def log(*lines):
    return "".join(f"[21.11.2026 17:45:48] <140136002304384> agentid| {line}\n" for line in lines).encode()


def ran(status=0, out="", err="", hung=False, core=False):
    return Run(status, out, err, 0.01, hung, core)


def found(agent_file=None, run_log=b"", **more):
    state = {"logs": {LOG: OLD + run_log}, "archives": {}, "broken": []} | more
    return Found(agent_file.encode() if agent_file is not None else None, **state)


class Judgement(unittest.TestCase):
    """A run in the scenario with an agent file that prints its id, unless a case says otherwise."""

    def problems(self, run=None, after=None, scenario="agent-file", losses=(), before=None, **fault):
        case = verdict.Case("stage/scenario/fault", scenario, **fault)
        if before is None:
            before = found(machine.SCENARIOS[scenario].sources.get("agent_file"))
        self.verdict = verdict.judge(losses, case, before, run or ran(out=AGENT_ID + "\n"),
                                     after or found(AGENT_ID, log(*FROM_FILE)))
        return self.verdict.problems

    def expect(self, problem, *args, **more):
        """Exactly one problem, with this text in it."""
        problems = self.problems(*args, **more)
        self.assertEqual(1, len(problems), problems)
        self.assertIn(problem, problems[0])


class Ends(Judgement):
    def test_whole_run_is_in_order(self):
        self.assertEqual([], self.problems())
        self.assertEqual("", self.verdict.other_id)

    def test_signal_is_a_crash(self):
        self.expect("crashed: ended by SIGSEGV", ran(-11), found(AGENT_ID, log(*BANNER)))
        self.assertTrue(self.verdict.crashed)

    def test_signal_of_the_scenario_may_end_the_run_at_any_message(self):
        for count in range(len(FROM_FILE)):
            self.assertEqual([], self.problems(ran(-9), found(AGENT_ID, log(*FROM_FILE[:count])), signal=9))

    def test_other_signal_than_the_scenarios_is_a_crash(self):
        self.expect("crashed: ended by SIGABRT", ran(-6), found(AGENT_ID, log(*BANNER)), signal=9)

    def test_third_status_is_a_crash(self):
        self.expect("crashed: ended by status 2", ran(2), found(AGENT_ID, log(*FROM_FILE)))

    def test_run_over_the_time_limit_hangs(self):
        self.expect("still ran after 10 s", ran(-9, hung=True), found(AGENT_ID, b""))
        self.assertTrue(self.verdict.hung)

    def test_core_dump_is_told(self):
        self.expect("left a core dump", ran(out=AGENT_ID + "\n", core=True))

    def test_signal_of_the_scenario_may_leave_a_core_dump(self):
        after = found(AGENT_ID, log(*BANNER))
        self.assertEqual([], self.problems(ran(-25, core=True), after, signal=25))
        self.expect("left a core dump", ran(out=AGENT_ID + "\n", core=True), signal=25)

    def test_fault_that_never_happened_is_told(self):
        run = ran(out=AGENT_ID + "\n")
        run.missed = True
        self.expect("never came to its fault", run)


class Output(Judgement):
    def test_success_without_an_id(self):
        self.assertIn("status 0, but standard output is ''", self.problems(ran()))

    def test_success_with_two_ids(self):
        self.assertIn("status 0, but standard output is", self.problems(ran(out=2 * (AGENT_ID + "\n")))[0])

    def test_id_that_is_not_the_last_line(self):
        self.assertIn("status 0, but standard output is", self.problems(ran(out=AGENT_ID + "\nmore\n"))[0])

    def test_id_without_its_line_feed(self):
        self.assertIn("status 0, but standard output is", self.problems(ran(out=AGENT_ID))[0])

    def test_success_with_an_error_text(self):
        self.expect("standard error is 'oh\\n'", ran(out=AGENT_ID + "\n", err="oh\n"))

    def test_failure_with_an_id(self):
        self.expect("status 1, but standard output has an id", ran(1, AGENT_ID + "\n", "std::bad_alloc\n"),
                    memory=True)

    def test_failure_without_a_text(self):
        self.expect("status 1, but standard error is ''", ran(1))

    def test_failure_without_a_text_where_nothing_reaches_standard_error(self):
        self.assertEqual([], self.problems(ran(1), mute=True))

    def test_failure_for_a_reason_that_the_fault_does_not_give(self):
        whole, end = found(AGENT_ID, log(*FROM_FILE)), found(AGENT_ID, log(*BANNER, BANNER[-1] + " Failed."))
        made = {"after": found(None, log(*MADE[:-1])), "scenario": "generated"}
        self.expect("status 1, but standard error is 'Failed to write", ran(1, err=NOT_PRINTED), whole)
        self.assertEqual([], self.problems(ran(1, err=NOT_PRINTED), whole, output=True))
        self.expect("status 1, but standard error is 'std::bad_alloc", ran(1, err="std::bad_alloc\n"), end)
        self.assertEqual([], self.problems(ran(1, err="std::bad_alloc\n"), end, memory=True))
        self.expect("status 1, but standard error is 'Failed to open", ran(1, err=NO_AGENT_FILE), whole)
        self.assertEqual([], self.problems(ran(1, err=NO_AGENT_FILE), **made))

    def test_program_that_runs_the_tool_fails(self):
        for err in ("strace: Can't stat '/tool/nelvoagentid'\n", "prlimit: failed to set the AS resource limit\n"):
            self.expect("status 1, but standard error is", ran(1, err=err), found(AGENT_ID), output=True, memory=True)

    def test_other_text_before_the_id(self):
        self.expect("standard output begins with 'hello'", ran(out="hello\n" + AGENT_ID + "\n"))


class Ids(Judgement):
    NEXT = {"run": ran(out=DMIDECODE_ID + "\n"), "after": found(AGENT_ID, log(*FROM_DMIDECODE))}

    def test_next_source_answers_for_one_that_is_hit(self):
        self.assertEqual([], self.problems(**self.NEXT, hits=frozenset({"agent_file"})))
        self.assertEqual("dmidecode", self.verdict.other_id)

    def test_next_source_answers_for_one_that_is_not_hit(self):
        self.expect("the id is that of dmidecode, prescribed is agent_file", **self.NEXT)

    def test_source_after_the_next_answers(self):
        lines = [*BANNER, "  Existed agentId was not found in agent file", WARNING,
                 "  Existed agentId was not found by dmidecode", "Existed agentId found in sysfs",
                 "Agent id: " + SYSFS_ID]
        self.assertIn("the id is that of sysfs, prescribed is agent_file or dmidecode",
                      self.problems(ran(out=SYSFS_ID + "\n"), found(AGENT_ID, log(*lines)),
                                    hits=frozenset({"agent_file"})))

    def test_made_id_is_of_version_four(self):
        odd = FRESH.replace("-4", "-5")
        lines = [line.replace(FRESH, odd) for line in MADE]
        self.expect("is no id of the tool's making", ran(out=odd + "\n"), found(odd, log(*lines)), "generated")

    def test_failure_that_has_to_be_told_is_not(self):
        self.expect("lost outside the list: 1 message(s): Failed to look uuid in file", **self.NEXT,
                    hits=frozenset({"agent_file"}), demands=frozenset({"agent_file"}))


class AgentFile(Judgement):
    MADE_RUN = ran(out=FRESH + "\n")

    def test_made_id_is_stored(self):
        self.assertEqual([], self.problems(self.MADE_RUN, found(FRESH, log(*MADE)), "generated"))

    def test_made_id_is_not_stored(self):
        self.expect("a new id was printed, but the agent file is None", self.MADE_RUN, found(None, log(*MADE)),
                    "generated")

    def test_other_id_is_stored(self):
        self.expect("a new id was printed, but", self.MADE_RUN, found(AGENT_ID, log(*MADE)), "generated")

    def test_short_file_after_another_fault_than_a_write(self):
        self.assertIn("a new id was printed, but",
                      self.problems(self.MADE_RUN, found(FRESH[:9], log(*MADE)), "generated")[0])

    def test_short_file_after_a_failed_write_is_a_loss(self):
        after = found(FRESH[:9], log(*MADE))
        self.expect("lost outside the list: the new id", self.MADE_RUN, after, "generated", store=True)
        allowing = [{"name": "an entry", "faults": ["stage/*"], "loses": ["id"], "reason": ""}]
        self.assertEqual([], self.problems(self.MADE_RUN, after, "generated", losses=allowing, store=True))

    def test_short_file_does_not_begin_the_printed_id(self):
        self.expect("a new id was printed, but", self.MADE_RUN, found(AGENT_ID[:9], log(*MADE)), "generated",
                    store=True)

    def test_file_of_a_run_that_fails_once_it_is_stored(self):
        run = ran(1, err=NOT_PRINTED)
        self.assertEqual([], self.problems(run, found(FRESH, log(*MADE)), "generated", output=True))
        self.expect("the agent file is", run, found(FRESH[:9], log(*MADE)), "generated", output=True)
        self.expect("the agent file is", run, found("x" * 38, log(*MADE)), "generated", output=True)
        self.assertEqual([], self.problems(run, found(FRESH[:9], log(*MADE)), "generated", output=True, store=True))

    def test_file_changes_in_a_run_that_fails_with_an_id_at_hand(self):
        self.expect("an id was found, but the agent file changed", ran(1, err=NOT_PRINTED),
                    found(FRESH, log(*FROM_FILE)), output=True)

    def test_long_file_after_a_failed_write(self):
        self.expect("the agent file is", self.MADE_RUN, found(FRESH + "x", log(*MADE)), "generated", store=True)

    def test_file_that_gave_the_id_changes(self):
        self.expect("an id was found, but the agent file changed", after=found(FRESH, log(*FROM_FILE)))

    def test_file_is_gone(self):
        self.assertIn("the agent file is gone", self.problems(after=found(None, log(*FROM_FILE))))

    def test_file_that_is_not_written_stays_away(self):
        lines = MADE[:-1]
        self.assertEqual([], self.problems(ran(1, err=NO_AGENT_FILE), found(None, log(*lines)), "generated"))


class Messages(Judgement):
    def allowing(self, *kinds):
        return [{"name": "an entry", "faults": ["stage/*"], "loses": list(kinds), "reason": ""}]

    def test_one_message_is_lost(self):
        after = found(AGENT_ID, log(*FROM_FILE[:1], *FROM_FILE[2:]))
        self.expect("lost outside the list: 1 message(s): name: ", after=after)
        self.expect("1 message(s): name: ", after=after, losses=self.allowing("rest", "log"))
        self.assertEqual([], self.problems(after=after, losses=self.allowing("message")))
        self.assertEqual({("an entry", "stage/*"), ("an entry", "message")}, self.verdict.used)

    def test_entry_for_other_cases_allows_nothing(self):
        other = [{"name": "an entry", "faults": ["other/*"], "loses": ["message"], "reason": ""}]
        self.expect("lost outside", after=found(AGENT_ID, log(*FROM_FILE[1:])), losses=other)

    def test_entry_for_what_is_up_to_chance_allows_it(self):
        entry = {"name": "an entry", "faults": ["other/*"], "by chance": ["stage/*"], "loses": ["message"],
                 "reason": ""}
        self.assertEqual([], self.problems(after=found(AGENT_ID, log(*FROM_FILE[1:])), losses=[entry]))
        self.assertIn("never matched in expected_loss.json: an entry: other/*",
                      campaign.unused_parts([entry], self.verdict.used))
        self.assertEqual(1, len(campaign.unused_parts([entry], self.verdict.used)))

    def test_two_messages_are_lost(self):
        after = found(AGENT_ID, log(FROM_FILE[0], *FROM_FILE[3:]))
        self.expect("2 message(s)", after=after, losses=self.allowing("message", "rest"))

    def test_rest_is_lost(self):
        after = found(AGENT_ID, log(*FROM_FILE[:3]))
        self.expect("2 message(s)", after=after, losses=self.allowing("message"))
        self.assertEqual([], self.problems(after=after, losses=self.allowing("rest")))

    def test_log_is_missing_and_nobody_is_told(self):
        self.expect("5 message(s)", after=found(AGENT_ID), losses=self.allowing("log"))

    def test_log_is_missing_and_standard_output_tells(self):
        run = ran(out=NO_LOG + AGENT_ID + "\n")
        self.expect("5 message(s)", run, found(AGENT_ID), losses=self.allowing("rest"))
        self.assertEqual([], self.problems(run, found(AGENT_ID), losses=self.allowing("log")))

    def test_log_is_there_and_standard_output_denies_it(self):
        self.expect("says that there is no log, but there is one", ran(out=NO_LOG + AGENT_ID + "\n"))

    def test_messages_are_out_of_order(self):
        self.expect("the log's messages are no run's", after=found(AGENT_ID, log(*reversed(FROM_FILE))))

    def test_message_that_no_run_writes(self):
        self.expect("the log's messages are no run's", after=found(AGENT_ID, log(*FROM_FILE, "hello")))

    def test_message_with_another_id(self):
        lines = [line.replace(AGENT_ID, SYSFS_ID) for line in FROM_FILE]
        self.expect("the log's messages are no run's", after=found(AGENT_ID, log(*lines)))

    def test_line_without_its_head(self):
        self.expect("a line without its whole head or end: 'half a line'",
                    after=found(AGENT_ID, log(*FROM_FILE) + b"half a line\n"))

    def test_line_without_its_end(self):
        self.expect("a line without its whole head or end: '[21.11",
                    after=found(AGENT_ID, log(*FROM_FILE) + log("x")[:-1]), losses=self.allowing("message"))

    def test_failure_inside_the_search_is_told(self):
        run = ran(1, err="std::bad_alloc\n")
        self.assertEqual([], self.problems(run, found(AGENT_ID, log(*BANNER, BANNER[-1] + " Failed.")), memory=True))
        self.expect("1 message(s): Looking for existed agentId Failed.", run, found(AGENT_ID, log(*BANNER)),
                    memory=True)

    def test_messages_in_two_logs(self):
        logs = {LOG: OLD + log(*FROM_FILE[:2]), "/work/nelvoagentid.1.log": log(*FROM_FILE[2:])}
        self.expect("more than one log", after=found(AGENT_ID, logs=logs))

    def test_log_in_another_place(self):
        for path in ("/work/nelvoagentid.1.log", "/tmp/NelvoBackup/nelvoagentid.log"):
            self.assertEqual([], self.problems(after=found(AGENT_ID, logs={LOG: OLD, path: log(*FROM_FILE)})))


class OldText(Judgement):
    BIG = OLD + bytes(machine.SIZE_LIMIT)
    NEWEST, FIRST, OLDEST = (f"/work/nelvoagentid{age}.log.gz" for age in ("", ".1", ".10"))
    BEFORE = found(AGENT_ID, logs={LOG: BIG}, archives={NEWEST: b"new", OLDEST: b"old"})

    def rotated(self, **more):
        state = {"logs": {LOG: log(*FROM_FILE)}, "archives": {self.NEWEST: self.BIG, self.FIRST: b"new"}} | more
        return found(AGENT_ID, **state)

    def test_old_text_is_gone(self):
        self.expect("lost outside the list: the old text of " + LOG,
                    after=found(AGENT_ID, logs={LOG: log(*FROM_FILE)}))

    def test_old_text_is_written_over(self):
        self.assertIn("lost outside the list: the old text of " + LOG,
                      self.problems(after=found(AGENT_ID, logs={LOG: log(*FROM_FILE) + OLD[9:]})))

    def test_rotation_moves_the_text_and_ages_the_archives(self):
        self.assertEqual([], self.problems(after=self.rotated(), before=self.BEFORE))

    def test_rotation_loses_an_archive(self):
        self.expect("the archive " + self.NEWEST, after=self.rotated(archives={self.NEWEST: self.BIG}),
                    before=self.BEFORE)

    def test_rotation_loses_the_text(self):
        archives = {self.NEWEST: self.BIG[:-1], self.FIRST: b"new"}
        self.expect("the old text of", after=self.rotated(archives=archives), before=self.BEFORE)

    def test_archive_of_the_text_is_not_whole(self):
        self.expect("the old text of", after=self.rotated(broken=[self.NEWEST]), before=self.BEFORE)

    def test_archive_that_is_not_whole_holds_what_no_log_did(self):
        archives = {self.NEWEST: b"x", self.FIRST: b"new"}
        self.assertIn(f"{self.NEWEST} holds what no log did",
                      self.problems(after=self.rotated(archives=archives, broken=[self.NEWEST]), before=self.BEFORE))

    def test_small_log_in_an_archive_is_lost_from_the_log(self):
        after = found(AGENT_ID, logs={LOG: log(*FROM_FILE)}, archives={self.NEWEST: OLD})
        self.expect("the old text of", after=after)


class Repeats(unittest.TestCase):
    def problems(self, scenario, before, run, after):
        return verdict.judge_repeat(verdict.Case("stage/scenario/fault", scenario), before, run, after).problems

    def test_stored_id_answers(self):
        state = found(FRESH)
        lines = [line.replace(AGENT_ID, FRESH) for line in FROM_FILE]
        self.assertEqual([], self.problems("generated", state, ran(out=FRESH + "\n"), found(FRESH, log(*lines))))

    def test_stored_id_answers_without_its_last_brace(self):
        state = found(FRESH[:-1])
        lines = [line.replace(AGENT_ID, FRESH) for line in FROM_FILE]
        self.assertEqual([], self.problems("generated", state, ran(out=FRESH + "\n"), found(FRESH[:-1], log(*lines))))

    def test_other_id_than_the_stored_one(self):
        self.assertIn("the id is that of fresh, prescribed is agent_file",
                      self.problems("generated", found(AGENT_ID), ran(out=FRESH + "\n"), found(FRESH, log(*MADE))))

    def test_repeat_may_not_fail(self):
        state = found(AGENT_ID)
        self.assertIn("failed without a fault: 'std::bad_alloc\\n'",
                      self.problems("agent-file", state, ran(1, err="std::bad_alloc\n"), found(AGENT_ID, log(*BANNER))))

    def test_nothing_may_be_lost(self):
        problems = self.problems("agent-file", found(AGENT_ID), ran(out=AGENT_ID + "\n"),
                                 found(AGENT_ID, log(*FROM_FILE[1:])))
        self.assertEqual(1, len(problems))


class Report(unittest.TestCase):
    def test_failed_case_is_counted_and_told_with_its_replay(self):
        tally = campaign.Tally({}, [])
        tally.add("stage/x/1", verdict.Verdict(["lost outside the list: x", "crashed"], ["x"], crashed=True))
        tally.add("stage/x/2", verdict.Verdict(problems=["hangs"], hung=True))
        tally.add("stage/x/3", verdict.Verdict(other_id="sysfs"))
        self.assertEqual((3, 1, 1, 1), (tally.runs, tally.crashes, tally.hangs, tally.lost))
        self.assertEqual({"stage/x/3": "sysfs"}, tally.other_ids)
        self.assertEqual([{"id": "stage/x/1", "problems": ["lost outside the list: x", "crashed"],
                           "replay": "./script/faults --replay 'stage/x/1'"},
                          {"id": "stage/x/2", "problems": ["hangs"],
                           "replay": "./script/faults --replay 'stage/x/2'"}], tally.failures)

    def test_case_that_cannot_be_run_is_a_failure(self):
        made = types.SimpleNamespace(run=lambda case, losses: [][0])
        with unittest.mock.patch.dict(campaign.STAGES, {"stage": made}):
            found_problems = campaign.run_case(verdict.Case("stage/x", "sysfs"), []).problems
        self.assertEqual(["the campaign itself failed: IndexError('list index out of range')"], found_problems)

    def test_parts_of_entries_that_no_case_used_are_told(self):
        losses = [{"name": "an entry", "faults": ["a/*", "b/*"], "loses": ["rest", "log"]}]
        self.assertEqual(["never matched in expected_loss.json: an entry: b/*",
                          "never matched in expected_loss.json: an entry: log"],
                         campaign.unused_parts(losses, {("an entry", "a/*"): 3, ("an entry", "rest"): 3}))

    def test_pattern_picks_cases_and_a_stage_all(self):
        cases = [verdict.Case("stage/x/1", "sysfs"), verdict.Case("stage/y/1", "sysfs")]
        self.assertEqual(cases, campaign.picked(cases, "stage"))
        self.assertEqual(cases[1:], campaign.picked(cases, "stage/y*"))
        self.assertEqual([], campaign.picked(cases, "stage/z*"))


class Entries(unittest.TestCase):
    def test_each_has_a_name_of_its_own_patterns_kinds_and_a_reason(self):
        losses = verdict.load_losses(campaign.LOSSES)
        self.assertEqual(len(losses), len({entry["name"] for entry in losses}))
        for entry in losses:
            self.assertEqual({"name", "faults", "loses", "reason"}, set(entry) - {"by chance"})
            self.assertTrue(entry["faults"] and entry["reason"].endswith("."), entry)
            self.assertLessEqual(set(entry["loses"]), verdict.KINDS, entry)


class Firmware(unittest.TestCase):
    def test_text_has_its_first_three_groups_turned_round(self):
        self.assertEqual("33221100-5544-7766-8899-aabbccddeeff",
                         machine.firmware_text("{00112233-4455-6677-8899-aabbccddeeff}"))


if __name__ == "__main__":
    unittest.main()
