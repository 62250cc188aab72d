-- Tracers and solids: a conservative tracer, a decaying tracer and suspended solids.
INSERT INTO models (Model_id, Model_name, Library, Sort_key) VALUES (2, 'Tracers and solids', 'tracer', 2);

INSERT INTO Systems (Model_id, Model_system_id, Description, Sort_key) VALUES
  (2, 1, 'Conservative tracer, g/m3', 1),
  (2, 2, 'Decaying tracer, g/m3', 2),
  (2, 3, 'Suspended solids, g/m3', 3);

INSERT INTO Parameters (Model_id, ISC_number, Minimum, Maximum, "Default", Description, Sort_key) VALUES
  (2, 1, -10, 45, 0, 'Water temperature, deg C; adds to the time function', 1),
  (2, 4,   0, 50, 0, 'Settling velocity of suspended solids, m/day', 2);

INSERT INTO Constants_groups (Group_id, Model_id, Description, Sort_key) VALUES
  (11, 2, 'Decaying tracer', 1),
  (12, 2, 'Suspended solids', 2);

INSERT INTO Constants (Group_id, ISC_number, Minimum, Maximum, "Default", Description, Sort_key) VALUES
  (11, 1, 0, 100, 0,     'Decay rate at 20 deg C, 1/day', 1),
  (11, 2, 1, 1.2, 1.047, 'Decay temperature coefficient', 2),
  (12, 3, 0, 50,  0,     'Settling velocity, m/day', 1);

INSERT INTO Time_functions (Model_id, ISC_number, Description, Sort_key) VALUES
  (2, 1, 'Water temperature, deg C', 1);

INSERT INTO segment_types (Model_id, Vesk_segment_type_id, Description, Sort_key) VALUES
  (2, 1, 'Surface', 1),
  (2, 2, 'Subsurface', 2),
  (2, 3, 'Surface Benthic', 3),
  (2, 4, 'Subsurface Benthic', 4);

INSERT INTO output_control (Model_Id, ISC_number, Description, Units, Short_Desc, Sort_key, Csv_filename) VALUES
  (2, 11, 'Conservative tracer',       'g/m3',  'tracer',       1, 'tracer.csv'),
  (2, 12, 'Decaying tracer',           'g/m3',  'decaying',     2, 'decaying_tracer.csv'),
  (2, 13, 'Suspended solids',          'g/m3',  'solids',       3, 'solids.csv'),
  (2,  1, 'Segment volume',            'm3',    'volume',       4, 'volume.csv'),
  (2,  2, 'Segment flow',              'm3 s-1', 'flow',        5, 'flow.csv'),
  (2,  3, 'Flow velocity',             'm s-1', 'velocity',     6, 'velocity.csv'),
  (2,  4, 'Water depth',               'm',     'depth',        7, 'depth.csv'),
  (2,  5, 'Water temperature',         'degC',  'temperature',  8, 'temperature.csv'),
  (2,  6, 'Residence time',            'day',   'residence',    9, 'residence.csv'),
  (2,  7, 'Largest stable time step',  'day',   'max_step',    10, 'max_step.csv');
