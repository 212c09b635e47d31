// PowerPoint's state in a file, so that it outlives the script; and what goes wrong with it.
"use strict";
const fs = require("fs");
const path = require("path");
const { failure } = require("./specifiers.js");
const { Program } = require("./program.js");

function sleep(milliseconds) {
  Atomics.wait(new Int32Array(new SharedArrayBuffer(4)), 0, 0, milliseconds);
}

class World {
  constructor(folder) {
    this.folder = folder;
    this.state = JSON.parse(fs.readFileSync(this.file("world.json"), "utf8"));
  }

  file(...names) {
    return path.join(this.folder, ...names);
  }

  log(entry) {
    fs.appendFileSync(this.file("events.log"), JSON.stringify(entry) + "\n");
  }

  isRunning() {
    this.takeKeys();
    return this.state.running;
  }

  /** What a person does at the computer, or the test to it, in the order of the files' names. */
  takeKeys() {
    const names = fs.readdirSync(this.file("keys")).filter((name) => !name.endsWith(".new")).sort();
    for (const name of names) {
      const key = JSON.parse(fs.readFileSync(this.file("keys", name), "utf8"));
      Object.assign(this.state, key.set || {});
      if (key.press) new Program(this).press(key.press);
      this.save();
      fs.unlinkSync(this.file("keys", name));
    }
  }

  save() {
    fs.writeFileSync(this.file("world.new"), JSON.stringify(this.state));
    fs.renameSync(this.file("world.new"), this.file("world.json"));
  }

  /** One Apple event. */
  event(name, handle) {
    this.log({ event: name.join(".") });
    sleep(this.state.slow || 0);
    if (!this.state.running) this.state.launched = true; // by this event, as any would
    this.takeKeys();
    if (this.state.launched) this.save();
    while (this.troubles(this.state.hang, name)) {
      sleep(20);
      this.takeKeys();
    }
    if (!this.state.running) throw failure(-600);
    for (const [number, where] of Object.entries(this.state.errors || {})) {
      if (this.troubles(where, name)) throw failure(Number(number));
    }
    const value = handle(new Program(this));
    if (name.includes("()") || name.includes("=")) this.save();
    return value;
  }

  /** `where`: true for all events, else a name that occurs in those meant. */
  troubles(where, name) {
    return where === true || (Boolean(where) && name.join(".").includes(where));
  }
}

module.exports = { World, sleep };
