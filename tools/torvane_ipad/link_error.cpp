#include "torvane_ipad/link_error.h"

#include <boost/asio/error.hpp>
#include <boost/asio/ssl/error.hpp>
#include <boost/beast/core/error.hpp>
#include <boost/beast/websocket/error.hpp>

namespace torvane::ipad {
namespace {

namespace net = boost::asio::error;
using boost::system::error_code;

struct Words {
  error_code error;
  const char* text;
};

}  // namespace

std::string inWords(const error_code& error) {
  static const Words kWords[] = {
      {net::host_not_found, "no computer of this name is known"},
      {net::host_not_found_try_again, "the name could not be looked up now"},
      {net::no_data, "no computer of this name is known"},
      {net::connection_refused, "no program listens there"},
      {net::network_unreachable, "no network leads there"},
      {net::host_unreachable, "no network leads there"},
      {net::timed_out, "it took too long"},
      {net::connection_reset, "it hung up"},
      {net::connection_aborted, "it hung up"},
      {net::broken_pipe, "it hung up"},
      {net::eof, "it hung up"},
      {boost::asio::ssl::error::stream_truncated, "it hung up"},
      {net::access_denied, "this computer does not allow it"},
      {boost::beast::error::timeout, "it fell silent"},
      {boost::beast::websocket::error::closed, "it was closed there"},
  };
  for (const Words& words : kWords) {
    if (words.error == error) return words.text;
  }
  if (error.category() == net::get_ssl_category()) return "it does not speak TLS 1.3";
  return {};
}

}  // namespace torvane::ipad
