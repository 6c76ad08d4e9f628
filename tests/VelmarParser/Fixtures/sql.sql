-- The garden's books.
CREATE TABLE plants (
  id INT PRIMARY KEY,
  name VARCHAR(40) NOT NULL,
  planted DATE DEFAULT NULL
);

INSERT INTO plants (id, name) VALUES (1, 'rose'), (2, 'bean');

SELECT p.name, COUNT(*) AS total
FROM plants AS p
LEFT JOIN beds b ON b.plant_id = p.id
WHERE p.name LIKE 'r%' AND b.size > 3
GROUP BY p.name
ORDER BY total DESC
LIMIT 10;

UPDATE plants SET name = 'Rose' WHERE id = 1;
DELETE FROM plants WHERE id IN (2, 3);
