#!/bin/sh
# The program takes the folder it is started from for its own, so it is started by its full path and not by a link here.
# What it makes there belongs to the group: several users may share one workstation.
umask 0002
exec /usr/lib/velk-spares/velk-spares "$@"
