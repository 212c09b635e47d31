"""LibreOffice Impress. Calls into an office have no time limit, so they are made by a child process
(__main__) that answers lines and can be ended at any time; presenter.py is the engine's side."""
