"""Microsoft PowerPoint on a Mac. It is asked by a long-lived `osascript`, which runs the .js files of
this folder as one script and answers lines; script.py is the engine's end of them."""
