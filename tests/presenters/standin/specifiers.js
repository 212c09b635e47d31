// JavaScript for Automation's way to a program: names make a reference, a call or an assignment
// sends an event. What was not called is a reference and no value.
"use strict";

const PATH = Symbol("path");

function application(world, name) {
  if (name !== "com.microsoft.Powerpoint") throw failure(-2700);
  const app = reference(world, []);
  return new Proxy(app, {
    get: (target, key) => (key === "running" ? () => world.isRunning() : target[key]),
  });
}

function failure(number) {
  // In the user's language, as the real ones.
  return Object.assign(new Error("Fehler in „PowerPoint“"), { errorNumber: number });
}

function reference(world, path) {
  return new Proxy(() => {}, {
    get(_, key) {
      if (key === PATH) return path;
      if (typeof key === "symbol") return undefined;
      if (key === "length") return world.event([...path, "length"], (app) => find(app, path).length);
      return reference(world, [...path, /^\d+$/.test(key) ? Number(key) : key]);
    },
    set(_, key, value) {
      world.event([...path, key, "=", value], (app) => {
        const holder = find(app, path);
        if (!(key in holder)) throw failure(-10006);
        holder[key] = value;
      });
      return true;
    },
    apply(_, __, given) {
      return world.event([...path, "()"], (app) => {
        const parameters = given.map((one) => (one && one[PATH] ? find(app, one[PATH]) : one));
        const holder = find(app, path.slice(0, -1));
        const last = path[path.length - 1];
        if (!Array.isArray(holder) && typeof holder[last] === "function") {
          return holder[last](...parameters);
        }
        const value = find(app, path);
        return isPlain(value) ? value : reference(world, path);
      });
    },
  });
}

function isPlain(value) {
  return Array.isArray(value) ? value.every(isPlain) : typeof value !== "object";
}

function find(app, path) {
  return path.reduce((holder, name) => {
    const value = Array.isArray(holder) && typeof name === "string"
      ? holder.map((one) => one[name]) : holder[name];
    if (value === undefined || value === null) throw failure(-1728);
    return value;
  }, app);
}

module.exports = { application, failure };
