"""The viewer torvane-show, a program of ours that shows a PDF on the whole screen. Also what there is
without any presentation program: the sample deck, whose show it is started for."""
