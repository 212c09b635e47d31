// PowerPoint's dictionary as far as it is used, with what is known of its faults.
"use strict";
const { failure } = require("./specifiers.js");
const { saveAs } = require("./files.js");

const STATE = (word) => `slide show state ${word}`;
const REFUSED_MILLISECONDS = 450; // in which no show starts after one has ended

class Program {
  constructor(world) {
    this.world = world;
    this.state = world.state;
  }

  get presentations() { return this.state.decks.map((deck, at) => new Presentation(this, deck, at)); }
  get activePresentation() { return this.presentations[this.state.front]; }
  get slideShowWindows() {
    return this.state.show ? [{
      presentation: this.presentations[this.state.show.deck],
      slideshowView: new ShowView(this),
    }] : [];
  }
  save(deck, options) { saveAs(this.world, deck.deck, options); }

  press(key) {
    const view = new ShowView(this);
    if (key === "F5") return this.presentations[this.state.front].slideShowSettings.runSlideShow();
    if (!this.state.show) return undefined;
    return { Next: () => view.goToNextSlide(), Prior: () => view.goToPreviousSlide(),
      Escape: () => view.exitSlideShow(), b: () => { view.slideState = STATE("black screen"); },
    }[key]();
  }
}

class Presentation {
  constructor(program, deck, at) {
    Object.assign(this, { program, deck, at });
  }

  get name() { return this.deck.path.split("/").pop(); }
  get fullName() { return this.deck.path; }
  get saved() { return this.deck.saved; }
  set saved(value) { this.deck.saved = value; }
  get pageSetup() { return { slideWidth: this.deck.width, slideHeight: this.deck.height }; }
  get slides() { return this.deck.slides.map((_, at) => new Slide(this.deck, at)); }
  get slideShowSettings() { return new Settings(this); }
  get documentWindows() { return this.deck.window ? [{ view: new EditorView(this.deck) }] : []; }
}

class Slide {
  constructor(deck, at) {
    Object.assign(this, { deck, at, slide: deck.slides[at] });
  }

  get slideID() { return this.slide.id; }
  get slideIndex() { return this.at + 1; }
  get printSteps() { return (this.slide.printed || this.slide.effects) + 1; }
  get slideShowTransition() { return { hidden: this.slide.hidden }; }
  get shapes() {
    return [shape("date", "today"), shape(this.at ? "title" : "center title", this.slide.title)];
  }
  get notesPage() {
    return { shapes: [shape("slide number", "7"), shape("body", this.slide.notes)] };
  }
}

function shape(kind, text) {
  return {
    placeholderFormat: { placeholderType: `placeholder type ${kind} placeholder` },
    hasTextFrame: true,
    textFrame: { textRange: { content: text.replace(/\n/g, "\r") } },
  };
}

class EditorView {
  constructor(deck) { this.deck = deck; }

  get slide() {
    if (this.deck.window.sorting) throw failure(-1728);
    return new Slide(this.deck, this.deck.window.slide - 1);
  }
  goToSlide({ number }) { this.deck.window.slide = number; }
}

class Settings {
  constructor(presentation) {
    this.presentation = presentation;
    this.deck = presentation.deck;
  }

  get startingSlide() { return this.deck.settings.starting; }
  get endingSlide() { return this.deck.settings.ending; }
  get rangeType() { return this.deck.settings.range; }
  set startingSlide(value) { this.change("starting", value, value <= this.endingSlide); }
  set endingSlide(value) { this.change("ending", value, value >= this.startingSlide); }
  set rangeType(value) { this.change("range", value, true); }
  change(name, value, good) {
    if (!good) throw failure(-50);
    this.deck.settings[name] = value;
    this.deck.saved = false;
  }

  runSlideShow() {
    const { state } = this.presentation.program;
    if (state.show || Date.now() - (state.ended || 0) < REFUSED_MILLISECONDS) throw failure(-50);
    const all = this.rangeType === "slide show range show all";
    state.show = { deck: this.presentation.at, effect: 0, state: "running",
      from: all ? 1 : this.startingSlide, to: all ? this.deck.slides.length : this.endingSlide };
    new ShowView(this.presentation.program).enter(state.show.from, 1, 0);
  }
}

class ShowView {
  constructor(program) {
    this.program = program;
    this.show = program.state.show;
  }

  get deck() { return this.program.state.decks[this.show.deck]; }
  get slideState() { return STATE(this.show.state); }
  set slideState(value) { this.show.state = value.replace(STATE(""), ""); }
  get slide() {
    if (this.show.state === "done" && !this.program.state.endHasSlide) throw failure(-1728);
    if (Date.now() - this.show.entered < this.program.state.late) {
      return new Slide(this.deck, this.show.before - 1);
    }
    return new Slide(this.deck, this.show.index - 1);
  }
  get currentShowPosition() {
    return this.deck.slides.slice(this.show.from - 1, this.show.index).filter((one) => !one.hidden).length;
  }

  /** The first slide from `number` on, in a direction, that is not hidden; false without one. */
  enter(number, by, effect) {
    for (let at = number; at >= this.show.from && at <= this.show.to; at += by) {
      const slide = this.deck.slides[at - 1];
      if (!slide.hidden) {
        Object.assign(this.show, { before: this.show.index || at, entered: Date.now(), index: at,
          effect: effect === "all" ? slide.effects : effect });
        return true;
      }
    }
    return false;
  }

  goToNextSlide() {
    if (this.show.state === "done") this.exitSlideShow();
    else if (this.show.effect < this.deck.slides[this.show.index - 1].effects) this.show.effect++;
    else if (!this.enter(this.show.index + 1, 1, 0)) this.show.state = "done";
  }
  goToPreviousSlide() {
    if (this.show.state === "done") this.show.state = "running";
    else if (this.show.effect > 0) this.show.effect--;
    else this.enter(this.show.index - 1, -1, "all");
  }
  goToFirstSlide() { this.leaveEnd(); this.enter(this.show.from, 1, 0); }
  goToLastSlide() { this.leaveEnd(); this.enter(this.show.to, -1, 0); }
  leaveEnd() { if (this.show.state === "done") this.show.state = "running"; }
  goToSlide() { throw failure(-50); }
  exitSlideShow() {
    const { state } = this.program;
    this.deck.window.slide = this.show.index;
    Object.assign(state, { show: null, ended: Date.now() });
  }
}

module.exports = { Program };
