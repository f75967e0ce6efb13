"""The engine in a plain full-screen window, with nothing closed; run as a program of its own."""

import sys

import gi

gi.require_version("Gtk", "4.0")
gi.require_version("WebKit", "6.0")
from gi.repository import Gtk, WebKit  # noqa: E402


def activate(application):
    window, view = Gtk.ApplicationWindow(application=application), WebKit.WebView()
    window.set_child(view)
    window.fullscreen()
    window.present()
    view.load_uri(sys.argv[1])


application = Gtk.Application()
application.connect("activate", activate)
application.run()
