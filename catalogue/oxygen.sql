-- Dissolved oxygen: ammonium, nitrate, ultimate CBOD and dissolved oxygen.
INSERT INTO models (Model_id, Model_name, Library, Sort_key) VALUES (1, 'Dissolved oxygen', 'oxygen', 1);

INSERT INTO Systems (Model_id, Model_system_id, Description, Sort_key) VALUES
  (1, 1, 'Ammonium nitrogen, g N/m3', 1),
  (1, 2, 'Nitrate nitrogen, g N/m3', 2),
  (1, 3, 'Ultimate CBOD, g O2/m3', 3),
  (1, 4, 'Dissolved oxygen, g O2/m3', 4);

INSERT INTO Parameters (Model_id, ISC_number, Minimum, Maximum, "Default", Description, Sort_key) VALUES
  (1, 1, -10,  45, 0, 'Water temperature, deg C; adds to the time function', 1),
  (1, 2,   0,  20, 0, 'Sediment oxygen demand at 20 deg C, g O2/m2/day', 2),
  (1, 3,   0, 100, 0, 'Reaeration rate at 20 deg C, 1/day; 0 works it out', 3),
  (1, 4,   0,  50, 0, 'Settling velocity of particulate CBOD, m/day', 4),
  (1, 5, -20,  40, 0, 'Net photosynthesis, g O2/m3/day; times the time function', 5),
  (1, 6,   0,  45, 0, 'Salinity, g/kg', 6);

INSERT INTO Constants_groups (Group_id, Model_id, Description, Sort_key) VALUES
  (1, 1, 'Nitrogen', 1),
  (2, 1, 'Carbonaceous demand', 2),
  (3, 1, 'Oxygen', 3);

INSERT INTO Constants (Group_id, ISC_number, Minimum, Maximum, "Default", Description, Sort_key) VALUES
  (1, 11, 0,   10,   0.1,   'Nitrification rate at 20 deg C, 1/day', 1),
  (1, 12, 1,   1.2,  1.083, 'Nitrification temperature coefficient', 2),
  (1, 13, 0,   5,    2,     'Half-saturation oxygen of nitrification, g O2/m3', 3),
  (1, 14, 0,   5,    4.57,  'Oxygen taken up by nitrification, g O2/g N', 4),
  (1, 15, 0,   5,    0.09,  'Denitrification rate at 20 deg C, 1/day', 5),
  (1, 16, 1,   1.2,  1.045, 'Denitrification temperature coefficient', 6),
  (1, 17, 0,   5,    0.1,   'Half-saturation oxygen of denitrification, g O2/m3', 7),
  (2, 21, 0,   10,   0.2,   'CBOD oxidation rate at 20 deg C, 1/day', 1),
  (2, 22, 1,   1.2,  1.047, 'CBOD oxidation temperature coefficient', 2),
  (2, 23, 0,   5,    0.5,   'Half-saturation oxygen of CBOD oxidation, g O2/m3', 3),
  (2, 24, 0,   50,   0,     'Settling velocity of particulate CBOD, m/day', 4),
  (3, 31, 0,   100,  0,     'Reaeration rate at 20 deg C, 1/day; 0 works it out', 1),
  (3, 32, 1,   1.1,  1.024, 'Reaeration temperature coefficient', 2),
  (3, 33, 0,   20,   0,     'Sediment oxygen demand at 20 deg C, g O2/m2/day', 3),
  (3, 34, 1,   1.2,  1.065, 'Sediment oxygen demand temperature coefficient', 4),
  (3, 35, 0,   5,    0.5,   'Half-saturation oxygen of sediment demand, g O2/m3', 5),
  (3, 36, 0,   45,   0,     'Salinity, g/kg', 6);

INSERT INTO Time_functions (Model_id, ISC_number, Description, Sort_key) VALUES
  (1, 1, 'Water temperature, deg C', 1),
  (1, 2, 'Wind speed at 10 m, m/s', 2),
  (1, 3, 'Net photosynthesis, share of the parameter', 3);

INSERT INTO segment_types (Model_id, Vesk_segment_type_id, Description, Sort_key) VALUES
  (1, 1, 'Surface', 1),
  (1, 2, 'Subsurface', 2),
  (1, 3, 'Surface Benthic', 3),
  (1, 4, 'Subsurface Benthic', 4);

INSERT INTO output_control (Model_Id, ISC_number, Description, Units, Short_Desc, Sort_key, Csv_filename) VALUES
  (1, 21, 'Ammonium nitrogen',         'g/m3',  'NH4',         1, 'ammonium.csv'),
  (1, 22, 'Nitrate nitrogen',          'g/m3',  'NO3',         2, 'nitrate.csv'),
  (1, 23, 'Ultimate CBOD',             'g/m3',  'CBOD',        3, 'cbod.csv'),
  (1, 24, 'Dissolved oxygen',          'g/m3',  'DO',          4, 'oxygen.csv'),
  (1, 25, 'Oxygen saturation',         'g/m3',  'DO_sat',      5, 'oxygen_saturation.csv'),
  (1, 26, 'Oxygen deficit',            'g/m3',  'DO_deficit',  6, 'oxygen_deficit.csv'),
  (1, 27, 'Reaeration rate',           'day-1', 'reaeration',  7, 'reaeration.csv'),
  (1,  1, 'Segment volume',            'm3',    'volume',      8, 'volume.csv'),
  (1,  2, 'Segment flow',              'm3 s-1', 'flow',       9, 'flow.csv'),
  (1,  3, 'Flow velocity',             'm s-1', 'velocity',   10, 'velocity.csv'),
  (1,  4, 'Water depth',               'm',     'depth',      11, 'depth.csv'),
  (1,  5, 'Water temperature',         'degC',  'temperature', 12, 'temperature.csv'),
  (1,  6, 'Residence time',            'day',   'residence',  13, 'residence.csv'),
  (1,  7, 'Largest stable time step',  'day',   'max_step',   14, 'max_step.csv');
