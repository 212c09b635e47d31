"""What requests of a fuzz test are made of: what is right, what never is, what is merely odd."""

GET_PATHS = (
    "/api/state", "/api/slides", "/api/documents", "/api/slides/{n}/picture?width=320",
    "/api/slides/{n}/notes", "/api/ink/events?since={n}", "/api/ink/overlay", "/api/export")
# With a body that is right; the engine's end is asked for by strangers only.
POSTS = (("/api/goto", {"slide": 2}), ("/api/next", None), ("/api/previous", None),
         ("/api/show/start", None), ("/api/show/end", None), ("/api/blank", {"on": False}),
         ("/api/document", {"document": "sample"}), ("/api/ink/undo", None), ("/api/export", None),
         ("/api/ink", {"events": [{"t": "begin", "id": 7, "x": 0.1, "y": 0.2},
                                  {"t": "pt", "id": 7, "x": 0.3, "y": 0.4},
                                  {"t": "del", "ids": [1, 2]}, {"t": "laser", "x": 1, "y": -1}]}),
         ("/api/ink/overlay", None))
# Members that a route cannot do without, by what is not one of them.
FIELDS = (
    ("/api/goto", "slide"), ("/api/blank", "on"), ("/api/ink", "events"),
    ("/api/document", "document"), ("/api/export", "document"))
NEVER = (
    "0", "-1", "-0", "1e3", "1.0", "1e400", "-1e400", "0.1e-400", "9" * 19, "9" * 400,
    "-" + "9" * 20, "NaN", "Infinity", "-Infinity", "{}", "[[]]", '{"slide":1}', "[null]",
    "[1e999]", "tru", "'1'", "[" * 500 + "]" * 500, "[" * 200_000, '{"a":' * 5000, "01", "1.",
    ".5", "+1", '"\x01"')
BAD_EVENTS = (
    '{}', '{"t":"begin"}', '{"t":["begin"]}', '{"t":null}', '{"t":"Begin"}', '{"t":"\\ud800"}',
    '{"t":"del"}', '{"t":"laser"}', '{"t":"pt","id":true,"x":0,"y":0}',
    '{"t":"pt","id":1.0,"x":0,"y":0}', '{"t":"begin","id":"1","x":0,"y":0}',
    '{"t":"begin","id":1,"x":1e400,"y":0}', '{"t":"begin","id":9223372036854775808,"x":0,"y":0}',
    '{"t":"begin","id":1,"x":false,"y":0}', '{"t":"begin","id":1,"x":0}', '{"t":"del","ids":[[]]}',
    '{"t":"del","ids":{}}', '{"t":"del","ids":[1,null]}', '{"t":"laser","x":10.01,"y":0}',
    '{"t":"laser","x":NaN,"y":0}', '{"t":"laser","y":0}')
TEXTS = (
    '""', '"\\ud800"', '"\\udfff\\ud800"', '"\\u0000"', '"../x"', '"' + "x" * 70_000 + '"')
BAD_BODIES = (
    b"", b"{", b"[]", b"null", b"{}", b"\xef\xbb\xbf{}", b"\xff\xfe{\0}\0", b'{"a":"\xed\xa0\x80"}',
    b"{}{}", b"{'slide':1}", b"{/**/}", b'{"slide":1,}', b"\0", b" " * 50_000, b'"' * 999)
BAD_LENGTHS = (
    "-1", "+2", "0x2", "2,2", "2 2", "", "1e1", "9" * 18, "9" * 19, "\xb2", "2;", "2.0", "2\x0b")
OTHER_LENGTHS = (
    "0", "1", "1048577", "\t2 ", "0000000002")
BAD_HEADERS = (
    "Transfer-Encoding: chunked", "Transfer-Encoding: identity",
    "transfer-encoding:\tgzip, chunked", " folded", "\tfolded: 1", "No colon", ": nameless",
    "Na me: 1", "Nul\x00: 1", "Value: \x00", "Value: a\nb", "Value: a\rb", "Long: " + "y" * 16_384,
    "Content-Length: 2\r\nContent-Length: 3", "Host: 127.0.0.1", "N\xe9: 1", "X : 1",
    "Origin:\r\nOrigin:", "X: \x7f")
OTHER_HEADERS = (
    "Expect: 100-continue", "Expect: 200-maybe", "Expect:",
    "Content-Type: text/plain; charset=\xff",
    "Content-Type: multipart/form-data; boundary=" + "-" * 300, "Content-Type:",
    "Connection: close", "X: \xe9\xff", "Connection: Upgrade\r\nUpgrade: websocket",
    "If-None-Match: *", "If-None-Match: " + '"x",' * 400, "Origin:", "Range: bytes=0-1",
    "Cookie: a=b", "Content-Type: application/json\r\nContent-Type: image/png", "Trailer: x")
BAD_LINES = (
    "{m} {p} HTTP/2.0", "{m} {p} HTTP/11", "{m} {p} http/1.1", "{m}  {p} HTTP/1.1", "{m} {p}",
    "{m}", "", "{p} {m} HTTP/1.1", "{m} {p} HTTP/1.1 ", "{m} http://evil.example{p} HTTP/1.1",
    "{m}\t{p}\tHTTP/1.1", "{m} {p}\x00 HTTP/1.1", "PRI * HTTP/2.0", "\x16\x03\x01\x02",
    "{m} /\xff{p} HTTP/1.1", "{m} {p}?%s HTTP/1.1" % ("q" * 17_000),
    "CONNECT evil.example:80 HTTP/1.1")
OTHER_LINES = (
    "{m} {p}#x HTTP/1.1", "{m}x {p} HTTP/1.1", "{m} /{p} HTTP/1.1", "OPTIONS {p} HTTP/1.1",
    "{m} {p}/ HTTP/1.0")
ODD_PATHS = (
    "/", "//", "/api", "/api/", "/API/STATE", "/api/state/", "/api/slides/0/picture",
    "/api/slides/-1/notes", "/api/slides/999999999/notes", "/api/slides/9999999999/notes",
    "/api/slides/1/picture/..", "/api/slides/1e0/notes", "/../api/state", "/api/%73tate",
    "/api/state%00", "/api/slides//notes", "/%", "/\\", "/api/shutdown",
    "/api/slides/" + "1" * 4000 + "/notes", "/api/next", "/{{}}", "/~root", "/api/ink/events/1")
QUERIES = (
    "since=", "since=-1", "since=1.5", "since=%31", "since=0x1", "since=1&since=2", "&since=1",
    "=", "&&&", "since", "since=" + "9" * 19, "since=" + "9" * 5000, "x=1&since=1", "width=0",
    "width=1", "width=9999", "width=10000", "width=-320", "width=320px", "width=" + "3" * 3000,
    "width=1&width=x", "?", "a=" + "&" * 2000)
