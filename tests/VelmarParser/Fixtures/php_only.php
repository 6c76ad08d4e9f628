namespace Garden;

enum Month: int
{
    case May = 5;
    case June = 6;

    public function label(): string
    {
        return match ($this) {
            self::May => 'in May',
            default => "in {$this->name}",
        };
    }
}

$months = array_filter(Month::cases(), static fn (Month $m): bool => $m->value > 5);
echo $months[1]?->label() ?? 'never', PHP_EOL;
