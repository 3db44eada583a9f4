"""Shows on made logs what the stages that kill and that fail rotations find."""

import unittest

import kill_sweep
import numbered_log
import rotation_faults
import verdict
from machine import Found
from numbered_log import LOG, archive

HEAD = b"[21.11.2026 17:45:48] <140136002304384> "
TOLD = (HEAD + b"       | ERR |Cannot close GZ archive [/work/w.log.gz].\n" + HEAD + b"       | ERR |Error code: -1\n")


def line(number):
    return HEAD + f"lines  | {numbered_log.message(number)}\n".encode()


def lines(first, end):
    return b"".join(line(number) for number in range(first, end))


class Reading(unittest.TestCase):
    def test_finds_messages_of_the_writer_of_the_tool_and_of_the_library(self):
        part = numbered_log.read(line(7) + HEAD + b"agentid| text\n" + TOLD)
        self.assertEqual([7], part.numbers)
        self.assertEqual(["text", *rotation_faults.CLOSING_FAILURE], part.others)
        self.assertEqual([], part.strange)

    def test_all_other_bytes_are_strange(self):
        self.assertEqual([b"x"], numbered_log.read(b"x" + line(1)).strange)
        self.assertEqual([line(1)[:60], line(3)[50:]], numbered_log.read(line(1)[:60] + line(2) + line(3)[50:]).strange)
        self.assertEqual([line(1).replace(b"000001", b"000002")],
                         numbered_log.read(line(1).replace(b"000001", b"000002") + line(3)).strange)

    def test_any_beginning_of_a_line_is_one_of_its_message_alone(self):
        long_line = line(50)
        for size in range(len(long_line) + 1):
            self.assertTrue(numbered_log.begins_line(50, long_line[:size]), size)
        self.assertFalse(numbered_log.begins_line(51, long_line[:60]))
        self.assertFalse(numbered_log.begins_line(50, long_line + b"x"))

    def test_archives_come_by_age(self):
        paths = [archive(number) for number in (10, 9, 1, 0)]
        self.assertEqual(["/work/w.10.log.gz", "/work/w.9.log.gz", "/work/w.1.log.gz", "/work/w.log.gz"], paths)
        found = Found(None, {}, dict.fromkeys(["/work/x.log.gz", *reversed(paths)], b""), [])
        self.assertEqual(paths, numbered_log.archives(found))


class Judgement(unittest.TestCase):
    """Every loss is allowed, and listed by its kind."""

    KINDS = ("message", "torn", "old text", "archive", "archive end", "repeat")
    LOSSES = [{"name": kind, "faults": ["*"], "loses": [kind], "reason": ""} for kind in KINDS]

    def judge(self):
        return verdict.Judge(self.LOSSES, verdict.Case("stage/case", "agent-file"), {}, None, None, None)


class Killed(Judgement):
    def expect(self, problems, losses, log, archives, broken=(), logged=30):
        judge = self.judge()
        found = Found(None, {LOG: log}, {archive(age): text for age, text in archives.items()},
                      [archive(age) for age in broken])
        kill_sweep.judge_messages(judge, found, logged)
        self.assertEqual(problems, judge.verdict.problems)
        self.assertEqual(losses, {entry for entry, _ in judge.verdict.used})

    def test_whole_log_is_in_order(self):
        self.expect([], set(), lines(20, 30), {0: lines(10, 20), 1: lines(0, 10)})
        self.expect([], set(), lines(20, 31), {0: lines(10, 20), 5: lines(0, 10)})

    def test_lost_message_is_found_wherever_it_stood(self):
        self.expect(["30 messages were logged, but 29 stand there"], set(), lines(20, 29), {0: lines(0, 20)})
        self.expect(["the archives do not hold one message after the other"], set(), lines(20, 30),
                    {0: lines(11, 20), 1: lines(0, 10)})
        self.expect(["the log does not go on with message 20", "30 messages were logged, but 29 stand there"], set(),
                    lines(21, 30), {0: lines(0, 20)})

    def test_oldest_messages_may_be_gone_with_all_archives_there(self):
        ten = {age: lines(20 - age, 21 - age) for age in range(10)}
        self.expect([], set(), lines(21, 30), ten)
        del ten[9]
        self.expect(["the messages up to 12 are gone with 9 archives"], set(), lines(21, 30), ten)

    def test_half_written_archive_repeats_the_log_or_has_lost_its_end(self):
        self.expect([], {"repeat"}, lines(10, 30), {0: lines(10, 15) + line(15)[:9], 1: lines(0, 10)}, [0])
        self.expect([], {"archive end"}, b"", {0: lines(10, 15), 1: lines(0, 10)}, [0])
        self.expect(["/work/w.log.gz does not go on with message 10"], {"repeat"}, lines(10, 30),
                    {0: lines(11, 15), 1: lines(0, 10)}, [0])
        self.expect(["/work/w.1.log.gz is broken"], {"repeat"}, lines(0, 30), {1: lines(0, 10)}, [1])

    def test_last_message_alone_may_be_torn(self):
        self.expect([], {"torn"}, lines(0, 30) + line(30)[:70], {})
        self.expect(["the log holds " + repr(line(31)[:60])], set(), lines(0, 30) + line(31)[:70], {})


class FailedRotation(Judgement):
    def expect(self, problems, losses, log, archives, broken=()):
        judge = self.judge()
        found = Found(None, {LOG: log}, {archive(age): text for age, text in archives.items()},
                      [archive(age) for age in broken])
        rotation_faults.judge_archives(judge, found)
        rotation_faults.judge_messages(judge, found, 30)
        self.assertEqual(problems, judge.verdict.problems)
        self.assertEqual(losses, {entry for entry, _ in judge.verdict.used})

    @staticmethod
    def old_archives(*numbers):
        return {number + 1: rotation_faults.archive_text(number) for number in numbers}

    def test_rotation_drops_the_oldest_archive(self):
        self.expect([], set(), lines(20, 30), {0: lines(0, 20), **self.old_archives(*range(10))})
        self.expect([], {"archive"}, lines(20, 30), {0: lines(0, 20), **self.old_archives(*range(9))})
        self.expect(["of the archives, [1, 2, 3, 4, 5, 6, 7, 8, 9, 10] are there"], set(), lines(20, 30),
                    {0: lines(0, 20), **self.old_archives(*range(1, 11))})

    def test_messages_are_counted(self):
        old = self.old_archives(*range(10))
        self.expect([], {"repeat"}, lines(0, 30), {0: lines(0, 20), **old}, [0])
        self.expect([], {"old text"}, lines(1, 30), old)
        self.expect([], {"archive end"}, lines(20, 30), {0: lines(0, 10), **old}, [0])
        self.expect([], {"torn"}, line(0)[:60] + lines(0, 30), old)
        self.expect(["there are messages that nobody wrote"], set(), lines(0, 31), old)

    def test_failure_to_complete_the_archive_is_told_in_two_messages(self):
        old = self.old_archives(*range(10))
        self.expect([], set(), TOLD + lines(0, 30) + TOLD, old)
        self.expect([f"the log tells of {rotation_faults.CLOSING_FAILURE[:1]}"], set(),
                    TOLD.splitlines(True)[0] + lines(0, 30), old)


if __name__ == "__main__":
    unittest.main()
