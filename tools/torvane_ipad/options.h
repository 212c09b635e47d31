#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace torvane::ipad {

// How the program ends; part of its interface.
enum class Exit { ok = 0, refused = 1, usage = 2, noConnection = 3 };

// Everything that can be said on the command line, with its default.
struct Options {
  std::string command;
  std::vector<std::string> operands;
  bool help = false;
  bool version = false;

  std::string host;        // empty: look for a helper
  std::uint16_t port = 0;  // 0: the helper's usual port
  std::string name;        // empty: made from this computer's name
  std::string keyFile;     // empty: in the user's data folder
  bool json = false;
  double timeout = 10;    // seconds for one answer
  double approval = 300;  // seconds for the answer of the user at the helper

  bool trustNew = false;
  bool forget = false;
  std::uint32_t peers = 0;  // 0: not given

  std::string method = "POST";
  std::string contentType;  // empty: application/json
  std::string output;       // empty: standard output

  std::uint32_t slide = 0;    // the number that an operand says; 0: the current one
  std::uint32_t width = 0;    // of a picture, in pixels; 0: the engine's own choice
  std::optional<bool> black;  // none: the opposite of what it is

  double every = 1;    // seconds between two looks
  double forTime = 0;  // seconds to watch; 0: until interrupted

  std::string figure;        // empty: the command's own
  std::uint32_t points = 0;  // of a figure; 0: not given
  double duration = 0;       // seconds for a drawing; 0: not given

  std::uint64_t requests = 0;    // of all peers together; 0: as many as `seconds` allows
  double seconds = 0;            // 0: until all requests are answered
  std::uint32_t inFlight = 1;    // unanswered requests of one peer
  double rate = 0;               // requests a second of all peers together; 0: as fast as possible
  std::string path;              // empty: /api/state
  std::uint64_t greedy = 0;      // requests of one more device, all at once; 0: there is none
  std::uint32_t echoSlides = 0;  // 0: no check of what an answer is about
};

}  // namespace torvane::ipad
