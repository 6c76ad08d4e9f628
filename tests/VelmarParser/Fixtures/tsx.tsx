import React, { useState } from "react";

type Props = { label: string; onAdd?: (count: number) => void };

export function Counter<T,>({ label, onAdd }: Props): JSX.Element {
  const [count, setCount] = useState<number>(0);
  return (
    <>
      {/* One button. */}
      <button
        className="counter"
        disabled={count > 9}
        onClick={() => {
          setCount(count + 1);
          onAdd?.(count);
        }}
      >
        {label}: {count}
      </button>
      {count > 0 && <Reset.Button {...{ label }} />}
    </>
  );
}
