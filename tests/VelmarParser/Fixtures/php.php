<!DOCTYPE html>
<ul>
<?php

declare(strict_types=1);

namespace Garden;

use InvalidArgumentException;

final class Bed implements \Countable
{
    public function __construct(private array $plants = []) {}

    public function count(): int
    {
        return \count($this->plants);
    }

    public static function of(string ...$names): ?self
    {
        if ($names === []) {
            throw new InvalidArgumentException("No names");
        }
        return new self(array_map(fn (string $name) => ucfirst($name), $names));
    }
}

foreach (['rose' => 3] as $name => $count): ?>
  <li><?= htmlspecialchars("$name: {$count}") ?></li>
<?php endforeach; ?>
</ul>
