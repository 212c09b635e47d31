"""The commands of torvane-ipad that list slides and move the show, against a scripted engine."""
import json
import unittest

from scripted_engine import ScriptedEngine
from scripted_helper import ScriptedHelper, reply
from tool_test import CERTIFICATES, KnownHelperTest

UNO = "LibreOffice is not running: open the presentation there."


class ShowTest(KnownHelperTest):
    def setUp(self):
        super().setUp()
        self.engine = ScriptedEngine()
        self.helper = ScriptedHelper(CERTIFICATES[0])
        self.helper.engine = self.engine
        self.start(self.helper)

    def ipad(self, *arguments):
        return self.run_tool(self.helper, *arguments)

    def said(self, *arguments):
        """What a command that must succeed says, and nothing else."""
        result = self.ipad(*arguments)
        self.assertEqual((result.returncode, result.stderr), (0, b""), result)
        return result.stdout.decode()

    def refused(self, *arguments, status=1):
        """The sentence of a command that must fail."""
        result = self.ipad(*arguments)
        self.assertEqual((result.returncode, result.stdout), (status, b""), result)
        return result.stderr.decode().removeprefix("torvane-ipad: ").rstrip("\n")


class Lists(ShowTest):
    def test_slides_show_number_title_and_marks(self):
        self.engine.state["slide"] = 2
        self.engine.hidden = {3}
        self.engine.titles[3] = ""
        self.assertEqual(self.said("slides"), "  1  Welcome\n> 2  Pens\n  3  Results (hidden)\n"
                         "  4  (no title)\n")

    def test_slides_stand_below_each_other(self):
        self.engine.titles = [f"T{number}" for number in range(1, 12)]
        lines = self.said("slides").splitlines()
        self.assertEqual((lines[0], lines[10]), (">  1  T1", "  11  T11"))

    def test_slides_are_one_object_in_json(self):
        fact = json.loads(self.said("slides", "--json"))
        self.assertEqual((fact["event"], fact["current"], fact["count"]), ("slides", 1, 4))
        self.assertEqual(fact["slides"][2], {"slide": 3, "title": "Results", "hidden": False})

    def test_slides_come_with_what_keeps_the_presentation_from_being_driven(self):
        self.engine.state["problem"] = UNO
        result = self.ipad("slides")
        self.assertEqual((result.returncode, result.stderr.decode()), (0, UNO + "\n"))
        self.assertIn("> 1  Welcome\n", result.stdout.decode())

    def test_slides_of_a_presentation_that_is_being_read(self):
        self.engine.state["progress"] = {"task": "slides", "done": 2, "total": 4}
        result = self.ipad("slides")
        self.assertEqual(result.returncode, 0)
        self.assertIn(b"being read still; some titles are missing", result.stderr)

    def test_bytes_for_the_terminal_in_titles(self):
        self.engine.titles[0] = "a\x1b[2Jb\nc"
        self.assertIn("> 1  a?[2Jb?c\n", self.said("slides"))

    def test_without_a_presentation_the_reason_is_told(self):
        self.engine.titles = []
        self.engine.documents = []
        self.engine.state.update(count=0, slide=0, problem=UNO)
        for command in (["slides"], ["notes"], ["documents"]):
            self.assertEqual(self.refused(*command), UNO)
        self.assertEqual(self.refused("goto", "2"),
                         "There is no slide 2: no presentation is open. " + UNO)
        self.engine.state["problem"] = None
        self.assertEqual(self.refused("slides"),
                         "No presentation is open at the computer. Open one there.")

    def test_notes_of_the_current_slide_or_another(self):
        self.engine.notes = {1: "Say hello.\n\tSmile\x07.", 3: "Breathe."}
        self.assertEqual(self.said("notes"), "Say hello.\n\tSmile?.\n")
        self.assertEqual(self.said("notes", "3"), "Breathe.\n")

    def test_missing_notes_are_no_output(self):
        result = self.ipad("notes", "2")
        self.assertEqual((result.returncode, result.stdout, result.stderr),
                         (0, b"", b"Slide 2 has no notes.\n"))
        self.engine.state["progress"] = {"task": "slides", "done": 1, "total": 4}
        self.assertIn("being read still. Try again", self.refused("notes", "2"))

    def test_notes_of_a_slide_that_is_not_there(self):
        self.assertEqual(self.refused("notes", "9"), "There is no slide 9: the last one is 4.")

    def test_documents_are_listed_with_their_ids(self):
        self.assertEqual(self.said("documents"), "> My talk  [talk]\n"
                         "  Another  [other], its show is running\n  Another  [twin]\n")

    def test_a_document_is_chosen_by_id_or_title(self):
        self.engine.late = 2
        self.assertEqual(self.said("documents", "twin"),
                         "\"Another\" is driven now. Slide 1 of 4: Welcome\n")
        for name in ("My talk", "My"):
            self.engine.state["document"] = "twin"
            self.assertEqual(self.said("documents", name),
                             "\"My talk\" is driven now. Slide 1 of 4: Welcome\n")
        self.assertEqual(self.engine.state["document"], "talk")

    def test_a_document_that_is_not_clear_is_refused(self):
        self.assertIn("More than one presentation is called \"Another\". Give its id",
                      self.refused("documents", "Another"))
        self.assertIn("No presentation \"x\" is open.", self.refused("documents", "x"))
        self.assertEqual(self.engine.state["document"], "talk")

    def test_a_document_that_is_not_taken_is_not_called_taken(self):
        self.engine.answers["POST", "/api/document"] = (200, "application/json",
                                                        b'{"document":"talk","deck":"My talk"}')
        self.assertIn("\"My talk\" is driven still.", self.refused("documents", "other"))


class Moves(ShowTest):
    def test_goto_tells_where_the_presentation_is_then(self):
        self.assertEqual(self.said("goto", "3"), "Slide 3 of 4: Results\n")

    def test_goto_waits_for_a_program_that_takes_its_time(self):
        self.engine.late = 4
        self.assertEqual(self.said("goto", "3"), "Slide 3 of 4: Results\n")

    def test_goto_beyond_the_last_slide_asks_for_nothing(self):
        self.assertEqual(self.refused("goto", "5"), "There is no slide 5: the last one is 4.")
        self.assertEqual(self.engine.asked, ["GET /api/state"])

    def test_goto_that_leads_nowhere_is_no_success(self):
        self.engine.answers["POST", "/api/goto"] = (200, "application/json", b'{"slide":1}')
        self.assertEqual(self.refused("goto", "3"),
                         "The presentation stays where it is: Slide 1 of 4: Welcome.")

    def test_next_tells_effects_too(self):
        self.engine.steps = {1: 2}
        self.engine.late = 2
        self.assertEqual(self.said("next"), "Slide 1 of 4, step 1 of 2: Welcome\n")
        self.assertEqual(self.said("next"), "Slide 1 of 4, step 2 of 2: Welcome\n")
        self.assertEqual(self.said("next"), "Slide 2 of 4: Pens\n")

    def test_next_at_the_end(self):
        self.engine.state["slide"] = 4
        self.assertEqual(self.said("next"), "Nothing moved: Slide 4 of 4: Thanks\n")
        self.engine.state["presenting"] = True
        self.assertEqual(self.said("next"), "Slide 4 of 4: Thanks (the show is past it)\n")

    def test_next_on_a_dark_screen(self):
        self.engine.state.update(slide=4, blank=True)
        self.assertEqual(self.said("next"),
                         "Nothing moved: Slide 4 of 4: Thanks (the screen is dark)\n")

    def test_previous(self):
        self.engine.state["slide"] = 2
        self.assertEqual(self.said("previous"), "Slide 1 of 4: Welcome\n")
        self.assertEqual(self.said("previous"), "Nothing moved: Slide 1 of 4: Welcome\n")

    def test_state_of_an_action_is_in_its_json(self):
        fact = json.loads(self.said("next", "--json"))
        self.assertEqual((fact["event"], fact["state"]["slide"]), ("next", 2))

    def test_start_and_end(self):
        self.engine.late = 2
        self.assertEqual(self.said("start"), "The slide show is running. Slide 1 of 4: Welcome\n")
        self.assertEqual(self.said("end"), "The slide show is not running.\n")

    def test_a_show_that_does_not_start_is_no_success(self):
        self.engine.answers["POST", "/api/show/start"] = (200, "application/json", b"{}")
        self.engine.state["problem"] = UNO
        self.assertEqual(self.refused("start"), "The slide show has not started. " + UNO)

    def test_black_turns_over_or_does_what_it_is_told(self):
        dark, light = "The screen is dark.\n", "The slide is on the screen. Slide 1 of 4: Welcome\n"
        for arguments, said in ((["black"], dark), (["black"], light), (["black", "on"], dark),
                                (["black", "on"], dark), (["black", "off"], light)):
            self.assertEqual(self.said(*arguments), said)

    def test_the_engines_sentence_is_passed_on(self):
        self.engine.refusal = "Start\x1b the show first"
        for command in (["black", "on"], ["next"], ["start"], ["goto", "2"],
                        ["documents", "other"], ["export", self.home + "/x.pdf"]):
            self.assertEqual(self.refused(*command), "Start? the show first.")

    def test_a_problem_of_the_engine_goes_with_the_result(self):
        self.engine.state["problem"] = UNO
        result = self.ipad("next")
        self.assertEqual((result.returncode, result.stdout.decode(), result.stderr.decode()),
                         (0, "Slide 2 of 4: Pens\n", UNO + "\n"))


class Jump(ShowTest):
    def test_that_takes_long_is_waited_for(self):
        states = [{"slide": 1, "count": 9, "progress": {"task": "jump", "done": n, "total": 40}}
                  for n in range(40)] + [{"slide": 9, "count": 9, "title": "End"}]
        self.helper.engine = lambda header, _: (200, "application/json", json.dumps(
            states.pop(0) if len(states) > 1 else states[0]).encode())
        self.assertEqual(self.said("goto", "9"), "Slide 9 of 9: End\n")  # after more than 3 s


class Engines(ShowTest):
    """That are off, old or strange."""

    COMMANDS = (["state"], ["slides"], ["notes"], ["notes", "2"], ["goto", "1"], ["next"],
                ["previous"], ["start"], ["end"], ["black"], ["black", "on"], ["documents"],
                ["documents", "talk"], ["draw"], ["laser"], ["undo"], ["clear"])

    def files(self):
        return (["preview", "1", self.home + "/x"], ["export", self.home + "/x"])

    def test_off(self):
        class NoEngine(ScriptedHelper):
            async def serve_request(self, ws, header, body):
                await ws.send(reply(header["id"], b"", 502, "application/octet-stream",
                                    error="Failed to connect to 127.0.0.1 port 8484"))

        self.helper = self.start(NoEngine(CERTIFICATES[0]))
        for command in (*self.COMMANDS, *self.files(), ["get", "/x"], ["post", "/x"]):
            self.assertEqual(self.refused(*command),
                             "The engine is not running: choose \"Start Server\" on \"Scripted\".")

    def test_that_gives_up_on_one_request(self):
        class HalfEngine(ScriptedHelper):
            async def serve_request(self, ws, header, body):
                if header["path"] == "/api/state":
                    return await super().serve_request(ws, header, body)
                return await ws.send(reply(header["id"], b"", 502, "application/octet-stream",
                                           error="Empty reply from server"))

        self.helper = self.start(HalfEngine(CERTIFICATES[0]))
        for command in (["get", "/x"], ["slides"], ["preview", "1", self.home + "/x"]):
            self.assertEqual(self.refused(*command), "The engine's answer broke off, or was longer "
                             "than the 63 MiB that the link carries. Try again, or look into the "
                             "engine's log on \"Scripted\".")

    def test_old(self):
        for path in ("/api/blank", "/api/export"):
            self.engine.answers["POST", path] = (404, "application/json", b'{"error":"no path"}')
        for command in (["black", "on"], ["export", self.home + "/x"]):
            self.assertEqual(self.refused(*command), "The engine on \"Scripted\" does not know this "
                             "command; it may be an old one.")

    def test_strange(self):
        for answer in (b"", b"[]", b"{", b"\xff", b"[" * 5000, b'"x"'):
            self.helper.engine = lambda *_, answer=answer: (200, "text/html", answer)
            for command in (["notes"], ["next"], ["export", self.home + "/x"]):
                self.assertIn("gave an answer of another kind", self.refused(*command))

    def test_with_members_of_other_types(self):
        odd = {"slide": "1", "count": [], "slides": [1, {}], "documents": [[], {"id": 7}],
               "notes": 3, "progress": "x", "export": [], "problem": 5, "document": {}}
        self.helper.engine = lambda *_: (200, "application/json", json.dumps(odd).encode())
        for command in (["slides"], ["notes"], ["documents"], ["goto", "1"], ["state"]):
            result = self.ipad(*command)
            self.assertIn(result.returncode, (0, 1), result)
        self.assertEqual(self.said("slides"), "> 0  (no title)\n")


if __name__ == "__main__":
    unittest.main()
