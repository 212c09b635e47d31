"""An engine behind a scripted helper: a presentation that does what it is told, late if wanted."""
import json

TITLES = ["Welcome", "Pens", "Results", "Thanks"]


class ScriptedEngine:
    """Set as `engine` of a ScriptedHelper. Its fields are changed by tests."""

    def __init__(self, titles=tuple(TITLES)):
        self.titles = list(titles)
        self.hidden = set()
        self.notes = {}
        self.documents = [("talk", "My talk"), ("other", "Another"), ("twin", "Another")]
        self.state = {"document": "talk", "slide": 1, "count": len(self.titles), "step": 0,
                      "steps": 0, "presenting": False, "blank": False, "atEnd": False,
                      "problem": None, "progress": None, "deck": "My talk"}
        self.steps = {}        # effects of a slide
        self.late = 0          # looks at the state until one shows what an action did
        self.refusal = None    # of every action
        self.answers = {}      # fixed ones by path: status, content type, body
        self.exports = []      # what the state's "export" is, look by look; the last one stays
        self.asked = []        # methods and paths
        self._shown = None

    def __call__(self, header, body):
        method, path = header["method"], header["path"]
        self.asked.append(f"{method} {path}")
        if (method, path) in self.answers:
            return self.answers[method, path]
        if path == "/api/state":
            return self._json(self._look())
        if method == "GET":
            return self._question(path)
        if self.refusal:
            return self._json({"error": self.refusal}, 409)
        before = self._answer()
        self._act(path, json.loads(body) if body else {})
        self._shown = (before, self.late) if self.late else None
        return self._json(self._look())

    def _json(self, answer, status=200):
        return status, "application/json", json.dumps(answer).encode()

    def _answer(self):
        number = self.state["slide"]
        return {**self.state, "title": self.titles[number - 1] if self.titles else "",
                "steps": self.steps.get(number, 0)}

    def _look(self):
        state = self._answer()
        if self._shown:
            state, looks = self._shown
            self._shown = (state, looks - 1) if looks > 1 else None
        if self.exports:
            state = {**state, "export": self.exports[0]}
            if len(self.exports) > 1:
                self.exports.pop(0)
        return state

    def _question(self, path):
        if path == "/api/slides":
            return self._json({"count": len(self.titles), "slides": [
                {"slide": number, "title": title, "hidden": number in self.hidden}
                for number, title in enumerate(self.titles, 1)]})
        if path == "/api/documents":
            return self._json({"document": self.state["document"], "documents": [
                {"id": one, "title": title, "presenting": one == "other"}
                for one, title in self.documents]})
        if path.endswith("/notes"):
            return self._json({"notes": self.notes.get(int(path.split("/")[3]), "")})
        return self._json({"error": "no such path"}, 404)

    def _act(self, path, body):
        state = self.state
        if path == "/api/goto":
            state.update(slide=body["slide"], step=0)
        elif path == "/api/next":
            self._go_on()
        elif path == "/api/previous":
            state.update(slide=max(1, state["slide"] - 1), step=0, atEnd=False)
        elif path.startswith("/api/show/"):
            state["presenting"] = path.endswith("start")
        elif path == "/api/blank":
            state["blank"] = body["on"]
        elif path == "/api/document":
            state.update(document=body["document"], deck=dict(self.documents)[body["document"]])

    def _go_on(self):
        state = self.state
        if state["step"] < self.steps.get(state["slide"], 0):
            state["step"] += 1
        elif state["slide"] < len(self.titles):
            state.update(slide=state["slide"] + 1, step=0)
        elif state["presenting"]:
            state["atEnd"] = True
