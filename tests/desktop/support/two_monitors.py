"""One display shared by two monitors of different size, and where a line across the slide is then."""

from private_desktop import HEIGHT, WIDTH

# left, top, right and bottom; the primary is lower than the other one and to the right of it
OTHER = (0, 0, 640, 360)
PRIMARY = (640, 200, WIDTH, HEIGHT)
NUMBER = {PRIMARY: 0, OTHER: 1}  # as Qt counts


def plug_in(desktop):
    desktop.run("xrandr", "--setmonitor", "*Primary", "640/160x600/150+640+200", "screen")
    plug_in_other(desktop)


def plug_in_other(desktop):
    if "Other" not in desktop.run("xrandr", "--listmonitors"):
        desktop.run("xrandr", "--setmonitor", "Other", "640/160x360/90+0+0", "none")


def unplug_other(desktop):
    desktop.run("xrandr", "--delmonitor", "Other")


def middle(area):
    return (area[0] + area[2]) // 2, (area[1] + area[3]) // 2


def line_inside(area):
    """What the line covers on a monitor that is as wide as the slide on it."""
    fifth, y = (area[2] - area[0]) // 5, middle(area)[1]
    return area[0] + fifth, y - 1, area[2] - fifth, y + 1


def line_and_edge(area):
    left, top, right, bottom = line_inside(area)
    return left - 2, top - 2, right + 2, bottom + 2
