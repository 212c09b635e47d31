"""The engine, in layers that each know only what is above them:

    presenters/     presentation programs, each driven on a thread of its own
    pdf/            draws on the pages of a PDF file, in a process of its own
    ink             strokes of every slide and the numbered event log for pollers
    export          the PDF of a presentation with its ink
    engine          presentation, ink and overlay picture as one state
    http_message    requests and answers
    checks          what may be in the bodies of requests
    api             paths and methods
    http_server     HTTP/1.1 on the loopback address
    process         arguments, signals, the end

It needs nothing but Python 3.9 and its standard library.
"""

VERSION = "1.0"
