// Nothing: the headers that short-running tests have in common are compiled with it.
