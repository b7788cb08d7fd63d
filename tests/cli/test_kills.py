"""Kills at fixed places, small enough for every day; bench/run kills plays hundreds."""
import os
import unittest

import kills
from quillcast import PROGRAM, Case


class Kills(Case):
    def test_nobody_is_lost_or_doubled_wherever_it_is_killed(self):
        killed = 0
        recipients = 300 if os.environ.get("QUILLCAST_SANITIZE") else kills.RECIPIENTS  # a sanitizer takes its time
        for seed in range(1, 21):
            with self.subTest(seed=seed):
                folder = self.folder / str(seed)
                folder.mkdir()
                mailing = kills.Mailing(PROGRAM, folder, seed, recipients)
                self.assertEqual(mailing.play(), [])
                killed += mailing.kills
        self.assertGreater(killed, 40, "the program was hardly killed at all")


if __name__ == "__main__":
    unittest.main()
