#pragma once

#include <QtCore/QStringList>

/**
 * Prints the shell completion script the arguments name ("bash" or "zsh"),
 * made from the command registry; the build installs both. Answers the exit
 * status.
 */
int qvkitPrintCompletion(const QStringList &arguments);
