#!/usr/bin/python3
"""A flood of invitations against the whole program: twice a thousand fresh keys and a hundred names
without one, from several addresses, while somebody with a real iPad wants to get on with the talk.

usage: flood_test.py BUILD_FOLDER PICTURE_FOLDER
"""

import asyncio
import collections
import os
import sys
import time

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "support"))

from private_desktop import (  # noqa: E402
    ACCESSIBILITY, skip_where_incomplete, wait_until)

skip_where_incomplete(("dbus", "gi", "websockets", "nacl"), (ACCESSIBILITY,))

import websockets  # noqa: E402

from dialog_stage import DialogStage  # noqa: E402
from helper_program import link_port  # noqa: E402
from link_device import Device  # noqa: E402
from menu_stage import main  # noqa: E402
from process_figures import descriptors, memory  # noqa: E402

FRESH, OLD = 1000, 100
AT_ONCE = 12  # where 16 are the most, and with them those that have not quite gone
A_MINUTE = 30  # invitations of unknown devices
OF_ITS_OWN = 3  # descriptors
MOST_GROWTH = 8 << 20  # bytes, with a dialog and those who wait


class FloodTest(DialogStage):
    def setUp(self):
        super().setUp()
        self.start()
        self.port = wait_until(lambda: link_port(self.desktop), "the peer link")
        self.real = Device(self.port, "Anna's iPad")
        self.answers = collections.Counter()
        self.waiting = []
        self.turned_away = 0

    def test_leaves_one_question_and_the_way_open_for_those_who_are_wanted(self):
        asyncio.run(self.play())

    async def play(self):
        pairing = asyncio.create_task(self.real.final_answer())
        await asyncio.to_thread(self.answer_question, self.real.name, "Pair")
        self.assertEqual(await pairing, "accepted")
        await self.real.close()
        open_before = descriptors(self.helper.pid)
        before = memory(self.helper.pid, "Rss")

        grown = []
        for wave in range(2):
            started = time.monotonic()
            await self.flood(wave)
            seconds = time.monotonic() - started
            grown.append(memory(self.helper.pid, "Rss") - before)
            print(f"{dict(self.answers)}, {self.turned_away} times no room, in {seconds:.1f} s; "
                  f"resident memory {before >> 10} kB, {grown[-1] >> 10} kB more")
            self.assertEqual(self.answers.total(), FRESH + OLD)
            self.assertLessEqual(FRESH + OLD - self.answers["busy"],
                                 A_MINUTE * (1 + seconds // 60))
            self.answers.clear()
        if not has_sanitizer(self.helper.pid):  # which keeps what was freed
            self.assertLess(grown[0], MOST_GROWTH)
            self.assertLess(grown[1] - grown[0], MOST_GROWTH // 4)

        await self.answer_some_who_wait()
        for device in self.waiting:
            await device.close()
        # Some of its own come and go, for the engine.
        wait_until(lambda: descriptors(self.helper.pid) <= open_before + OF_ITS_OWN,
                   "the end of connections")
        self.assertIsNone(self.helper.poll())

    async def flood(self, wave):
        """All of them, a dozen at any time. Those who may wait for an answer do."""
        devices = iter([
            Device(self.port, f"iPad {wave}-{number}", is_old=number % 11 == 10,
                   address=f"127.0.1.{number % AT_ONCE // 3}") for number in range(FRESH + OLD)])
        knocking = asyncio.gather(*(self.knock(devices) for _ in range(AT_ONCE)))
        while not knocking.done():
            await self.come_back()
            await asyncio.wait([knocking], timeout=0.5)
        await knocking

    async def knock(self, devices):
        for device in devices:
            answer = await self.patiently(
                device.invite if device.key else device.final_answer)
            self.answers[answer] += 1
            if answer == "waiting":
                self.waiting.append(device)
            else:
                await device.close()

    async def patiently(self, knock):
        """Knocks again where there was no room even for that."""
        while True:
            try:
                return await knock()
            except (OSError, websockets.WebSocketException):
                self.turned_away += 1

    async def come_back(self):
        """The device that was let in comes in without a question, while there is one at most."""
        self.assertEqual(await self.patiently(self.real.final_answer), "accepted")
        await self.real.close()
        alerts = await asyncio.to_thread(self.reader.alerts)
        self.assertLessEqual(len(alerts), 1, [alert.name for alert in alerts])

    async def answer_some_who_wait(self):
        """The one asked about first is wanted, the others are not."""
        waiting = {device.name: device for device in self.waiting}
        for count in range(4):
            alerts = await asyncio.to_thread(self.one_alert)
            name = alerts[0].name.split("“")[1].split("”")[0]
            button = "Ignore" if count else "Pair"
            await asyncio.to_thread(self.answer_question, name, button)
            self.assertEqual(await waiting.pop(name).answer(),
                             "declined" if count else "accepted")

    def one_alert(self):
        return wait_until(lambda: len(self.reader.alerts()) == 1 and self.reader.alerts(),
                          "one alert, no more and no less")

    def answer_question(self, name, button):
        self.answer(f"Pair with “{name}”?", ["Pair", "Ignore"], button)


def has_sanitizer(pid):
    with open(f"/proc/{pid}/maps", encoding="utf-8") as file:
        return "libasan" in file.read()


if __name__ == "__main__":
    main()
