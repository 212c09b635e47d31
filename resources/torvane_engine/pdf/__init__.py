"""Draws ink on the pages of a PDF file by appending to it, as ISO 32000-1 describes it in 7.5.6:
what was in the file stays as it was, byte for byte. A Mac's own Python has no library that could.

    objects            dictionaries, names, references: bytes read into values and written again
    streams            their data, unpacked
    cross_references   where the objects of a file are
    document           a file's objects and pages
    update             new and changed objects at the end of a file
    drawing            strokes as operators of a page, and all pages drawn on
    __main__           the process that does it

Files come from anywhere. Whatever is in one, reading it ends with its pages or with Unreadable,
within the limits of Budget; and a process of its own does it, with limits of time and memory.
"""
