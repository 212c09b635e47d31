#include "torvane_ipad/link_error.h"

#include <gtest/gtest.h>

#include <boost/asio/error.hpp>
#include <boost/asio/ssl/error.hpp>
#include <boost/beast/core/error.hpp>
#include <boost/beast/websocket/error.hpp>

namespace torvane::ipad {
namespace {

namespace net = boost::asio::error;
using boost::system::error_code;

TEST(LinkError, IsToldInWordsForPeople) {
  EXPECT_EQ(inWords(net::connection_refused), "no program listens there");
  EXPECT_EQ(inWords(net::host_not_found), "no computer of this name is known");
  EXPECT_EQ(inWords(net::network_unreachable), "no network leads there");
  EXPECT_EQ(inWords(net::eof), "it hung up");
  EXPECT_EQ(inWords(boost::asio::ssl::error::stream_truncated), "it hung up");
  EXPECT_EQ(inWords(boost::beast::error::timeout), "it fell silent");
}

TEST(LinkError, OfTlsIsOneForAll) {
  for (const int number : {1, 0x0A00010B, 0x0A000126}) {
    EXPECT_EQ(inWords(error_code(number, net::get_ssl_category())), "it does not speak TLS 1.3");
  }
}

TEST(LinkError, ThatNobodyCouldActOnHasNoWords) {
  EXPECT_EQ(inWords(net::no_memory), "");
  EXPECT_EQ(inWords(boost::beast::websocket::error::bad_size), "");
}

}  // namespace
}  // namespace torvane::ipad
