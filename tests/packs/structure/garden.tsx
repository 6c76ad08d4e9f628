interface Props<T> {
  list: T[];
}

export function Row({ name }: { name: string }) {
  return <li>{name}</li>;
}

export const Table = <T,>(props: Props<T>) => {
  const [open, setOpen] = useState(false);
  const toggle = () => setOpen(!open);
  return (
    <table>
      {props.list.map((row) => (
        <Row
          name={row.name}
        />
      ))}
    </table>
  );
};
