-- The techniques of the bundled engine. A data set whose solution type is 0 runs with the first.
INSERT INTO solution (ID, Solution) VALUES
  (1, 'Explicit Euler'),
  (2, 'Explicit Runge-Kutta, order 4'),
  (3, 'Implicit BDF');
