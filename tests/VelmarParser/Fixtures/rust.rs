//! Counts plants.
use std::collections::HashMap;

#[derive(Debug, Clone, PartialEq)]
pub enum Plant<'a> {
    Rose { color: &'a str },
    Bean(u32),
}

pub trait Water {
    fn water(&mut self, litres: f64) -> Result<(), String>;
}

impl<'a> Water for Vec<Plant<'a>> {
    fn water(&mut self, litres: f64) -> Result<(), String> {
        for plant in self.iter_mut() {
            match plant {
                Plant::Rose { color } if *color == "red" => println!("{litres:.1} for a rose"),
                Plant::Bean(count @ 1..=9) => *count += 1,
                _ => return Err(format!("{:?}", plant)),
            }
        }
        Ok(())
    }
}

fn main() {
    let mut counts: HashMap<String, usize> = HashMap::new();
    *counts.entry(r#"rose"#.to_string()).or_insert(0) += 1;
    let total: usize = counts.values().map(|n| n * 2).sum();
    assert_eq!(total, 2);
}
