"""torvane-ipad against scripted helpers. TORVANE_IPAD names the program."""
import asyncio
import http
import json
import os
import signal
import ssl
import stat
import subprocess
import threading
import unittest

from scripted_helper import PlainServer, ScriptedHelper, encode, reply
from tool_test import CERTIFICATES, DEADLINE, KnownHelperTest, ToolTest


class Pairing(ToolTest):
    def test_accepted_device_remembers_the_helper(self):
        helper = self.start(ScriptedHelper(CERTIFICATES[0]))
        said = self.check(self.run_tool(helper, "pair", "--name", "Ada’s iPad"), 0,
                          "\"Scripted\" accepted \"Ada’s iPad\".")
        self.assertIn(f"Where nobody pressed \"Pair\" beside the digits {helper.digits}", said)
        self.assertEqual(helper.invitations[0][0], "Ada’s iPad")
        self.assertEqual((helper.faults, helper.refused), ([], 0))
        with open(self.data("known-helpers.json"), encoding="utf-8") as known:
            self.assertEqual(json.load(known)["helpers"], [{
                "address": f"127.0.0.1:{helper.port}", "name": "Scripted",
                "fingerprint": CERTIFICATES[0].fingerprint}])

    def test_key_and_list_are_for_the_user_alone(self):
        helper = self.start(ScriptedHelper(CERTIFICATES[0]))
        self.check(self.run_tool(helper, "pair"), 0)
        for name, mode in (("key", 0o600), ("known-helpers.json", 0o600), ("", 0o700)):
            self.assertEqual(stat.S_IMODE(os.stat(self.data(name)).st_mode), mode, name)

    def test_device_keeps_its_key(self):
        helper = self.start(ScriptedHelper(CERTIFICATES[0]))
        self.check(self.run_tool(helper, "pair"), 0)
        self.check(self.run_tool(helper, "pair"), 0)
        self.assertEqual(helper.invitations[0], helper.invitations[1])

    def test_peers_have_keys_of_their_own(self):
        helper = self.start(ScriptedHelper(CERTIFICATES[0]))
        self.check(self.run_tool(helper, "pair", "--peers", "3", "--name", "iPad"), 0)
        self.assertEqual([name for name, _ in helper.invitations],
                         ["iPad (1)", "iPad (2)", "iPad (3)"])
        self.assertEqual(len({key for _, key in helper.invitations}), 3)

    def test_refusal_is_explained(self):
        class Declining(ScriptedHelper):
            async def answer_invitation(self, ws):
                await ws.send('{"type":"refused","reason":"declined"}')
                return False

        helper = self.start(Declining(CERTIFICATES[0]))
        self.check(self.run_tool(helper, "pair"), 1, "its user chose not to pair it")
        self.assertFalse(os.path.exists(self.data("known-helpers.json")))

    def test_waits_for_the_user_and_says_so(self):
        class Asking(ScriptedHelper):
            async def answer_invitation(self, ws):
                self.approved = asyncio.Event()
                await self.approved.wait()
                return await super().answer_invitation(ws)

        helper = self.start(Asking(CERTIFICATES[0]))
        command = self.command("pair", "--port", str(helper.port))
        with subprocess.Popen(command, env=self.environment, stdout=subprocess.PIPE,
                              stderr=subprocess.PIPE, text=True) as tool:
            said = tool.stderr.readline()
            self.assertIn("Waiting for approval at \"Scripted\"", said)
            self.assertIn(f"Its question must show the digits {helper.digits};", said)
            helper._loop.call_soon_threadsafe(helper.approved.set)
            self.assertIn("accepted", tool.communicate(timeout=DEADLINE)[0])
        self.assertEqual(tool.returncode, 0)

    def test_gives_up_waiting_for_the_user(self):
        class Silent(ScriptedHelper):
            async def answer_invitation(self, ws):
                await ws.wait_closed()
                return False

        helper = self.start(Silent(CERTIFICATES[0]))
        self.check(self.run_tool(helper, "pair", "--approval", "0.1"), 1,
                   "Nobody has answered at the helper")


    def test_digits_are_part_of_the_result(self):
        helper = self.start(ScriptedHelper(CERTIFICATES[0]))
        lines = self.run_tool(helper, "pair", "--json").stdout.decode().splitlines()
        accepted = next(fact for fact in map(json.loads, lines) if fact["event"] == "accepted")
        self.assertEqual(accepted["digits"], helper.digits)

    def test_known_helper_is_not_called_new(self):
        helper = self.start(ScriptedHelper(CERTIFICATES[0]))
        self.check(self.run_tool(helper, "pair"), 0, "trusted from now on")
        said = self.check(self.run_tool(helper, "pair"), 0, "accepted")
        self.assertNotIn("trusted from now on", said)

    def test_helper_that_chooses_its_nonce_late_is_not_trusted(self):
        class Late(ScriptedHelper):
            def opening(self):
                return bytes(32)

        helper = self.start(Late(CERTIFICATES[0]))
        self.check(self.run_tool(helper, "pair"), 1, "it did not open its commitment")
        self.assertFalse(os.path.exists(self.data("known-helpers.json")))

    def test_helper_without_digits_is_not_trusted(self):
        class Old(ScriptedHelper):
            subprotocols = ["torvane.link.1"]

            async def _refuse_other_paths(self, path, headers):
                if "torvane.link.1" not in headers.get("Sec-WebSocket-Protocol", ""):
                    return http.HTTPStatus.BAD_REQUEST, [], b""
                return None

        helper = self.start(Old(CERTIFICATES[0]))
        self.check(self.run_tool(helper, "pair"), 3, "no version of the peer link with digits")
        self.assertEqual(helper.invitations, [])


class Strangers(ToolTest):
    """Helpers that this device was never paired with."""

    COMMANDS = (["info"], ["get", "/"], ["post", "/x"], ["state"], ["watch"], ["draw"], ["laser"],
                ["undo"], ["clear"], ["load"], ["replay"])

    def test_get_nothing_but_the_invitation_of_pair(self):
        helper = self.start(ScriptedHelper(CERTIFICATES[0]))
        for command in self.COMMANDS:
            said = self.check(self.run_tool(helper, *command), 3, "was never paired with")
            self.assertIn("Run \"torvane-ipad pair\" for it first", said)
            self.assertIn(CERTIFICATES[0].fingerprint, said)
        self.assertEqual(helper.invitations, [])
        self.check(self.run_tool(helper, "pair"), 0)
        self.check(self.run_tool(helper, "info"), 0, "build 42")

    def test_are_not_trusted_for_knowing_others(self):
        self.know(CERTIFICATES[0])
        helper = self.start(ScriptedHelper(CERTIFICATES[1]))
        self.check(self.run_tool(helper, "info"), 3, "was never paired with")
        self.assertEqual(helper.invitations, [])

    def test_are_not_those_at_a_new_address(self):
        self.know(CERTIFICATES[1], CERTIFICATES[0])
        helper = self.start(ScriptedHelper(CERTIFICATES[0]))
        self.check(self.run_tool(helper, "info"), 0, "build 42")
        with open(self.data("known-helpers.json"), encoding="utf-8") as known:
            addresses = {each["fingerprint"]: each["address"]
                         for each in json.load(known)["helpers"]}
        self.assertEqual(addresses, {CERTIFICATES[0].fingerprint: f"127.0.0.1:{helper.port}",
                                     CERTIFICATES[1].fingerprint: "elsewhere.local:48484"})


class Trust(ToolTest):
    def setUp(self):
        super().setUp()
        with ScriptedHelper(CERTIFICATES[0]) as helper:
            self.port = helper.port
            self.check(self.run_tool(helper, "pair"), 0)

    def other_helper(self):
        return self.start(ScriptedHelper(CERTIFICATES[1], self.port))

    def test_another_certificate_gets_nothing(self):
        helper = self.other_helper()
        said = self.check(self.run_tool(helper, "info"), 3, "pair --trust-new")
        self.assertIn(CERTIFICATES[1].fingerprint, said)
        self.check(self.run_tool(helper, "pair"), 3, "nothing was sent")
        self.assertEqual(helper.invitations, [])

    def test_another_certificate_can_be_trusted(self):
        helper = self.other_helper()
        self.check(self.run_tool(helper, "pair", "--trust-new"), 0)
        self.check(self.run_tool(helper, "info"), 0)

    def test_trusting_another_certificate_ends_the_trust_in_the_first(self):
        self.check(self.run_tool(self.other_helper(), "pair", "--trust-new"), 0)
        first = self.start(ScriptedHelper(CERTIFICATES[0]))
        self.check(self.run_tool(first, "info"), 3, "was never paired with")

    def test_certificate_can_be_forgotten(self):
        helper = self.other_helper()
        self.check(self.run_tool(helper, "pair", "--forget"), 0, "is forgotten")
        self.check(self.run_tool(helper, "pair", "--forget"), 2, "No certificate")
        self.check(self.run_tool(helper, "pair"), 0)

    def test_damaged_list_is_an_error(self):
        with open(self.data("known-helpers.json"), "w", encoding="utf-8") as known:
            known.write("{")
        self.check(self.run_tool(self.other_helper(), "info"), 2, "is damaged")

    def runtime_file(self, port, fingerprint):
        os.makedirs(self.home + "/run/torvane", exist_ok=True)
        with open(self.home + "/run/torvane/peer-link.json", "w", encoding="utf-8") as file:
            json.dump({"port": port, "fingerprint": fingerprint, "name": "Here",
                       "pid": os.getpid()}, file)

    def test_helper_of_this_computer_is_found_by_its_file(self):
        helper = self.start(ScriptedHelper(CERTIFICATES[0]))
        self.runtime_file(helper.port, CERTIFICATES[0].fingerprint)
        self.check(self.run_tool(None, "info"), 0, "build 42")
        self.check(self.run_tool(None, "find"), 0, "Here at 127.0.0.1:")

    def test_unknown_helper_of_this_computer_is_trusted_by_pairing_alone(self):
        helper = self.start(ScriptedHelper(CERTIFICATES[1]))
        self.runtime_file(helper.port, CERTIFICATES[1].fingerprint)
        self.check(self.run_tool(None, "info"), 3, "was never paired with")
        self.assertEqual(helper.invitations, [])
        self.check(self.run_tool(None, "pair"), 0)
        self.check(self.run_tool(None, "info"), 0, "build 42")
        self.check(self.run_tool(None, "pair", "--forget"), 0, "is forgotten")
        self.check(self.run_tool(None, "info"), 3, "was never paired with")

    def test_helper_of_this_computer_must_show_the_certificate_of_its_file(self):
        helper = self.start(ScriptedHelper(CERTIFICATES[1]))
        self.runtime_file(helper.port, CERTIFICATES[0].fingerprint)
        self.check(self.run_tool(None, "info"), 3, "another certificate")


class Requests(KnownHelperTest):
    def test_info_names_the_build(self):
        helper = self.start(ScriptedHelper(CERTIFICATES[0]))
        self.check(self.run_tool(helper, "info"), 0, "The helper is build 42.")
        line = json.loads(self.run_tool(helper, "info", "--json").stdout)
        self.assertEqual(line, {"event": "info", "version": "42"})
        self.assertEqual((helper.faults, helper.refused), ([], 0))

    def test_get_writes_the_body_as_it_is(self):
        body = bytes(range(256)) * 1000
        helper = ScriptedHelper(CERTIFICATES[0])
        helper.engine = lambda *_: (200, "image/png", body)
        self.start(helper)
        result = self.run_tool(helper, "get", "/api/slides/1/picture")
        self.assertEqual((result.returncode, result.stdout), (0, body))
        self.check(self.run_tool(helper, "get", "/x", "--output", self.home + "/x.png"), 0)
        with open(self.home + "/x.png", "rb") as file:
            self.assertEqual(file.read(), body)

    def test_get_reports_errors(self):
        helper = ScriptedHelper(CERTIFICATES[0])
        helper.engine = lambda *_: (404, "application/json", b'{"error":"no such path"}')
        self.start(helper)
        result = self.run_tool(helper, "get", "/nowhere")
        self.check(result, 1, "The engine answered with status 404: no such path.")
        line = json.loads(self.run_tool(helper, "get", "/nowhere", "--json").stdout.split(b"\n")[0])
        self.assertEqual(line["status"], 404)
        self.assertEqual(line["body"], {"error": "no such path"})

    def test_post_sends_file_type_and_method(self):
        helper = self.start(ScriptedHelper(CERTIFICATES[0]))
        self.check(self.run_tool(helper, "post", "/api/goto", "-", input=b'{"slide":3}'), 0)
        self.check(self.run_tool(helper, "post", "/api/next"), 0)
        self.check(self.run_tool(helper, "post", "/x", self.data("key"), "--method", "PUT",
                                 "--content-type", "text/plain"), 0)
        (goto, goto_body), (forward, forward_body), (put, put_body) = helper.requests
        self.assertEqual((goto["method"], goto["contentType"], goto_body),
                         ("POST", "application/json", b'{"slide":3}'))
        self.assertEqual((forward["method"], forward_body), ("POST", b""))
        self.assertNotIn("contentType", forward)
        self.assertEqual((put["method"], put["contentType"], len(put_body)),
                         ("PUT", "text/plain", 45))

    def test_unreadable_file_is_an_error(self):
        self.check(self.run_tool(None, "post", "/x", self.home + "/none"), 2, "cannot be read")

    def test_request_without_answer_is_reported(self):
        class Deaf(ScriptedHelper):
            async def serve_request(self, ws, header, body):
                pass

        helper = self.start(Deaf(CERTIFICATES[0]))
        self.check(self.run_tool(helper, "get", "/", "--timeout", "0.3"), 1,
                   "did not answer in time")

    def test_answers_to_other_requests_are_not_taken(self):
        class Confused(ScriptedHelper):
            async def serve_request(self, ws, header, body):
                await ws.send(reply(header["id"] + 1, b"wrong"))
                await ws.send(reply(header["id"], b"right"))

        helper = self.start(Confused(CERTIFICATES[0]))
        self.assertEqual(self.run_tool(helper, "get", "/").stdout, b"right")


class State(KnownHelperTest):
    def test_state_is_told_in_words(self):
        helper = ScriptedHelper(CERTIFICATES[0])
        helper.engine = lambda *_: (200, "application/json",
                                    b'{"slide":2,"count":5,"title":"Pens","presenting":false}')
        self.start(helper)
        self.assertEqual(self.run_tool(helper, "state").stdout.decode().splitlines(),
                         ["Slide 2 of 5: Pens", "The slide show is not running"])

    def test_watch_tells_changes_until_its_time_is_over(self):
        slides = iter([1, 1, 2, 2])
        helper = ScriptedHelper(CERTIFICATES[0])
        helper.engine = lambda *_: (200, "application/json",
                                    json.dumps({"slide": next(slides, 3)}).encode())
        self.start(helper)
        result = self.run_tool(helper, "watch", "--every", "0.02", "--for", "2")
        self.assertEqual(result.returncode, 0)
        self.assertEqual(result.stdout.decode().splitlines(), ["Slide 1", "Slide 2", "Slide 3"])

    def test_watch_ends_well_when_interrupted(self):
        helper = self.start(ScriptedHelper(CERTIFICATES[0]))
        helper.engine = lambda *_: (200, "application/json", b'{"slide":1}')
        command = self.command("watch", "--port", str(helper.port))
        with subprocess.Popen(command, env=self.environment, stdout=subprocess.PIPE) as tool:
            self.assertEqual(tool.stdout.readline(), b"Slide 1\n")
            tool.send_signal(signal.SIGINT)
            self.assertEqual(tool.wait(DEADLINE), 0)

    def test_watch_tells_when_the_helper_goes(self):
        class Leaving(ScriptedHelper):
            async def serve_request(self, ws, header, body):
                await ws.close(1001, "bye")

        helper = self.start(Leaving(CERTIFICATES[0]))
        self.check(self.run_tool(helper, "watch"), 3, "was lost (bye)")


class Replay(KnownHelperTest):
    def test_honest_helper_refuses_replays(self):
        helper = self.start(ScriptedHelper(CERTIFICATES[0]))
        self.check(self.run_tool(helper, "replay"), 0, "Sent twice on one connection: 1 answer. "
                   "Sent again on a new connection: no answer. Replays are refused.")
        self.assertEqual(helper.refused, 1)

    def test_replay_on_another_connection_is_noticed(self):
        helper = ScriptedHelper(CERTIFICATES[0])
        helper.new_challenge = lambda: "always the same"
        self.start(helper)
        result = self.run_tool(helper, "replay", "--json")
        self.assertEqual(json.loads(result.stdout), {"event": "replay", "sameConnection": 1,
                                                     "newConnection": 1, "refused": False})
        self.assertEqual(result.returncode, 1)

    def test_replays_that_are_answered_are_noticed(self):
        class Forgetful(ScriptedHelper):
            async def serve_frame(self, ws, state, frame):
                state["ids"].clear()
                await super().serve_frame(ws, state, frame)

        helper = self.start(Forgetful(CERTIFICATES[0]))
        self.check(self.run_tool(helper, "replay"), 1, "Sent twice on one connection: 2 answers.")


class InkCommands(KnownHelperTest):
    def setUp(self):
        super().setUp()
        self.helper = ScriptedHelper(CERTIFICATES[0])
        self.helper.engine = lambda *_: (200, "application/json", b'{"strokes":2}')
        self.start(self.helper)

    def events(self):
        """All events that were sent, after a look at how."""
        events = []
        for header, body in self.helper.requests:
            self.assertEqual((header["path"], header["method"], header["contentType"]),
                             ("/api/ink", "POST", "application/json"))
            events += json.loads(body)["events"]
        return events

    def test_draw_sends_a_figure_as_one_stroke_bit_by_bit(self):
        said = self.check(self.run_tool(self.helper, "draw", "--json", "--figure", "line",
                                        "--points", "11", "--duration", "0.2"), 0)
        events = self.events()
        self.assertEqual([event["t"] for event in events], ["begin"] + ["pt"] * 10)
        self.assertEqual({event["id"] for event in events}, {json.loads(said)["firstId"]})
        self.assertEqual(json.loads(said)["points"], 11)
        self.assertEqual((events[0]["x"], events[0]["y"]), (0.15, 0.75))
        self.assertGreater(len(self.helper.requests), 1)

    def test_draw_sends_the_strokes_of_a_file(self):
        text = b"# a cross\n0.1 0.1\n0.9 0.9\n\n0.1, 0.9\n0.9, 1e-1\n"
        self.check(self.run_tool(self.helper, "draw", "-", "--duration", "0.01", input=text), 0,
                   "Drew 4 points.")
        events = self.events()
        self.assertEqual([event["t"] for event in events], ["begin", "pt"] * 2)
        self.assertEqual([(event["x"], event["y"]) for event in events],
                         [(0.1, 0.1), (0.9, 0.9), (0.1, 0.9), (0.9, 0.1)])
        self.assertEqual(events[2]["id"], events[0]["id"] + 1)

    def test_draw_refuses_what_it_cannot_read(self):
        for text, said in ((b"0.1 0.1\n0.2\n", "Line 2 of - is no point"),
                           (b"# nothing\n", "There is nothing to draw.")):
            self.check(self.run_tool(self.helper, "draw", "-", input=text), 2, said)
        self.check(self.run_tool(self.helper, "draw", "/no/such/file"), 2, "cannot be read")
        self.check(self.run_tool(self.helper, "draw", "x", "--figure", "star"), 2, "either")
        self.assertEqual(self.helper.requests, [])

    def test_laser_moves_and_ends(self):
        self.check(self.run_tool(self.helper, "laser", "--for", "0.3"), 0, "The laser dot went to")
        events = self.events()
        self.assertEqual({event["t"] for event in events[:-1]}, {"laser"})
        self.assertEqual(events[-1], {"t": "laserend"})
        self.assertGreater(len({(event["x"], event["y"]) for event in events[:-1]}), 1)

    def test_interrupted_laser_ends_too(self):
        moves = threading.Event()

        def engine(*_):
            if len(self.helper.requests) > 2:
                moves.set()
            return 200, "application/json", b"{}"

        self.helper.engine = engine
        command = self.command("laser", "--port", str(self.helper.port))
        with subprocess.Popen(command, env=self.environment, stdout=subprocess.PIPE,
                              stderr=subprocess.PIPE, text=True) as tool:
            self.assertTrue(moves.wait(DEADLINE))
            tool.send_signal(signal.SIGINT)
            tool.communicate(timeout=DEADLINE)
        self.assertEqual(tool.returncode, 0)
        self.assertEqual(self.events()[-1], {"t": "laserend"})

    def test_clear_takes_all_ink(self):
        self.check(self.run_tool(self.helper, "clear"), 0, "no ink any more")
        self.assertEqual(self.events(), [{"t": "clear"}])

    def test_undo_tells_what_is_left(self):
        self.check(self.run_tool(self.helper, "undo"), 0, "The slide has 2 strokes.")
        header, body = self.helper.requests[0]
        self.assertEqual((header["path"], header["method"], body), ("/api/ink/undo", "POST", b""))

    def test_refusal_of_the_engine_is_reported(self):
        self.helper.engine = lambda *_: (400, "application/json", b'{"error":"no such thing"}')
        for command in (["draw"], ["laser"], ["clear"], ["undo"]):
            self.check(self.run_tool(self.helper, *command), 1,
                       "The engine answered with status 400: no such thing.")


class Load(KnownHelperTest):
    def load(self, helper, *arguments):
        self.start(helper)
        result = self.run_tool(helper, "load", "--json", *arguments)
        return result.returncode, json.loads(result.stdout)

    def test_all_requests_are_answered_once(self):
        helper = ScriptedHelper(CERTIFICATES[0])
        status, said = self.load(helper, "--peers", "3", "--requests", "100", "--in-flight", "4")
        self.assertEqual(status, 0)
        self.assertEqual((said["peers"], said["sent"], said["answered"]), (3, 100, 100))
        self.assertEqual((helper.faults, helper.refused), ([], 0))
        self.assertEqual(len({request["path"] for request, _ in helper.requests}), 100)
        self.assertEqual(len({key for _, key in helper.invitations}), 3)

    def test_a_greedy_device_is_counted_apart_and_the_others_go_on_beside_it(self):
        helper = ScriptedHelper(CERTIFICATES[0])
        status, said = self.load(helper, "--peers", "2", "--greedy", "400", "--rate", "200")
        self.assertEqual(status, 0)
        self.assertEqual((said["greedy"]["sent"], said["greedy"]["answered"]), (400, 400))
        self.assertEqual(said["peers"], 2)
        self.assertGreater(said["sent"], 0)
        self.assertEqual(said["answered"], said["sent"])
        self.assertEqual(len({key for _, key in helper.invitations}), 3)
        self.assertEqual(len(helper.requests), 400 + said["sent"])

    def test_a_greedy_device_that_asks_for_nothing_is_refused(self):
        for number in ("0", "-1", "1000001", "x"):
            self.check(self.run_tool(None, "load", "--greedy", number), 2,
                       "--greedy needs a number from 1 to 1000000.")

    def test_rate_and_time_limit_what_is_sent(self):
        status, said = self.load(ScriptedHelper(CERTIFICATES[0]), "--seconds", "1", "--rate", "50",
                                 "--in-flight", "10")
        self.assertEqual(status, 0)
        self.assertGreater(said["sent"], 5)
        self.assertLessEqual(said["sent"], 60)

    def test_lost_answers_are_counted(self):
        class Losing(ScriptedHelper):
            async def serve_request(self, ws, header, body):
                if not header["path"].endswith("-7"):
                    await super().serve_request(ws, header, body)

        status, said = self.load(Losing(CERTIFICATES[0]), "--requests", "20", "--timeout", "0.5")
        self.assertEqual((status, said["lost"], said["answered"]), (1, 1, 19))

    def test_doubled_answers_are_counted(self):
        class Stuttering(ScriptedHelper):
            async def serve_request(self, ws, header, body):
                await super().serve_request(ws, header, body)
                if header["path"].endswith("-20"):
                    await super().serve_request(ws, header, body)

        status, said = self.load(Stuttering(CERTIFICATES[0]), "--requests", "20")
        self.assertEqual((status, said["doubled"], said["answered"]), (1, 1, 20))

    def test_answers_for_others_are_counted(self):
        class Mixing(ScriptedHelper):
            async def serve_request(self, ws, header, body):
                if "load=1-5" in header["path"]:
                    await ws.send(reply(header["id"] + (1 << 40)))
                await super().serve_request(ws, header, body)

        status, said = self.load(Mixing(CERTIFICATES[0]), "--peers", "2", "--requests", "20")
        self.assertEqual((status, said["misdelivered"], said["answered"]), (1, 1, 20))

    def test_answers_about_another_slide_are_counted(self):
        helper = ScriptedHelper(CERTIFICATES[0])
        helper.engine = lambda header, _: (200, "application/json", json.dumps(
            {"slide": 1 if header["path"].endswith("-3") else
                      int(header["path"].split("/")[3])}).encode())
        status, said = self.load(helper, "--requests", "10", "--echo-slides", "5")
        self.assertEqual((status, said["misdelivered"], said["answered"]), (1, 1, 9))

    def test_failed_and_broken_answers_are_counted(self):
        class Failing(ScriptedHelper):
            async def serve_request(self, ws, header, body):
                if header["path"].endswith("-4"):
                    await ws.send(b"\0\0\0\1x")
                await super().serve_request(ws, header, body)

            def engine(self, header, body):
                return 500 if header["path"].endswith("-6") else 200, "text/plain", b""

        status, said = self.load(Failing(CERTIFICATES[0]), "--requests", "10")
        self.assertEqual((status, said["broken"], said["failed"], said["answered"]),
                         (1, 1, 1, 10))

    def test_lost_connection_is_counted(self):
        class Leaving(ScriptedHelper):
            async def serve_request(self, ws, header, body):
                if header["path"].endswith("load=2-3"):
                    await ws.close()
                else:
                    await super().serve_request(ws, header, body)

        status, said = self.load(Leaving(CERTIFICATES[0]), "--peers", "2", "--requests", "20")
        self.assertEqual((status, said["connectionsLost"], said["lost"]), (1, 1, 1))
        self.assertEqual(said["answered"], 12)


class RudeHelpers(KnownHelperTest):
    """None of them may crash the program or keep it for ever."""

    def check_rude(self, helper, status, text):
        self.start(helper)
        self.check(self.run_tool(helper, "get", "/", "--timeout", "5"), status, text)

    def test_nobody_there(self):
        with PlainServer(None) as server:
            port = server.port
        result = subprocess.run(self.command("info", "--port", str(port)), env=self.environment,
                                capture_output=True, timeout=DEADLINE, check=False)
        self.check(result, 3, "(no program listens there). Is Torvane P2P Helper running")

    def test_no_tls(self):
        for greeting in (b"", b"HTTP/1.1 200 OK\r\n\r\n", b"\x16\x03\x03\xff\xff" + b"x" * 70000):
            self.check_rude(PlainServer(greeting), 3, "is no Torvane P2P Helper")

    def test_silence(self):
        with PlainServer(None) as server:
            result = self.run_tool(server, "info", "--timeout", "0.3")
        self.check(result, 3, "it took too long")

    def test_old_tls(self):
        helper = ScriptedHelper(CERTIFICATES[0])
        helper.newest_tls = ssl.TLSVersion.TLSv1_2
        self.check_rude(helper, 3, "is no Torvane P2P Helper")

    def test_other_web_socket_server(self):
        helper = ScriptedHelper(CERTIFICATES[0])
        helper.subprotocols = None
        self.check_rude(helper, 3, "is no Torvane P2P Helper")

    def test_upgrade_refused(self):
        class Refusing(ScriptedHelper):
            async def _refuse_other_paths(self, path, _headers):
                return http.HTTPStatus.FORBIDDEN, [], b"x" * 100000

        self.check_rude(Refusing(CERTIFICATES[0]), 3, "it answered with status 403")

    def greeting(self, message, status, text):
        class Greeting(ScriptedHelper):
            async def greet(self, ws):
                await ws.send(message)
                await ws.wait_closed()

        self.check_rude(Greeting(CERTIFICATES[0]), status, text)

    def test_strange_greetings(self):
        nonce = "A" * 43 + "="
        for message in ("", "{}", "[" * 2000, '{"type":"accepted"}', '{"type":"waiting"}',
                        '{"type":"hello","version":2,"name":"x","nonce":"AAAA"}',
                        json.dumps({"type": "hello", "version": 2, "name": "x", "nonce": nonce}),
                        json.dumps({"type": "hello", "version": 2, "name": "x" * 5000,
                                    "nonce": nonce, "commitment": nonce})):
            self.greeting(message, 1, "it said something unexpected")
        self.greeting(b"binary", 1, "a message of the wrong kind")
        self.greeting(json.dumps({"type": "hello", "version": 3, "name": "x", "nonce": nonce}), 3,
                      "it speaks version 3")

    def test_huge_message(self):
        self.greeting(b"x" * (64 * 1024 + 1), 1, "a message that is too long")

    def answering(self, messages, text, status=1):
        class Answering(ScriptedHelper):
            async def serve_frame(self, ws, state, frame):
                for message in messages:
                    await ws.send(message)

        self.check_rude(Answering(CERTIFICATES[0]), status, text)

    def test_broken_frames(self):
        for frame in (b"", b"\0\0\0", b"\xff\xff\xff\xff{}", b"\0\0\0\2[]", encode({"id": 1}),
                      encode({"id": "1", "status": 200, "contentType": "x"}),
                      b"\0\1\0\0" + b"[" * 65536, reply(2 ** 70)):
            self.answering([frame], "it sent a malformed answer")

    def test_text_after_acceptance(self):
        self.answering(['{"type":"accepted"}'], "a message of the wrong kind")

    def test_no_challenge(self):
        for body in (b"", b"{}", b'{"challenge":7}'):
            self.answering([reply(1, body)], "it gave no challenge")

    def test_flood_of_answers(self):
        flood = [reply(99, b"x" * 8 * 1024 * 1024)] * 12
        self.answering(flood, "far more than was asked for")

    def test_bytes_for_the_terminal_in_names(self):
        class Colourful(ScriptedHelper):
            async def greet(self, ws):
                await ws.send(json.dumps({"type": "hello", "version": 2,
                                          "name": "\x1b[31mRed\u202e", "nonce": "A" * 43 + "=",
                                          "commitment": "A" * 43 + "="}))
                await ws.recv()
                await ws.send('{"type":"refused","reason":"\\u001b[2J"}')
                await ws.wait_closed()

        helper = self.start(Colourful(CERTIFICATES[0]))
        said = self.check(self.run_tool(helper, "pair"), 1, "(?[2J)")
        self.assertNotIn("\x1b", said)


if __name__ == "__main__":
    unittest.main()
