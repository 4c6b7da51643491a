// Widgets of the program.
